#include "platform/sqlite/SqliteKeychain.hpp"

#include "platform/openssl/SealedValue.hpp"
#include "platform/posix/DeadlineMutex.hpp"
#include "platform/sqlite/KeychainFile.hpp"

#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

using Purpose = KeychainFile::Purpose;

/// The attributes that tell items apart. An item's value is sealed with them.
struct Identity {
    std::string itemClass;
    std::string service;
    std::string account;
    std::string accessGroup;

    std::string associatedData() const {
        std::string data;
        for (const auto* part : {&itemClass, &service, &account, &accessGroup}) {
            data += std::to_string(part->size()) + ":" + *part;
        }
        return data;
    }
};

Identity identityOf(const KeychainAttributes& attributes) {
    return {attributes.kSecClass, attributes.kSecAttrService.value_or(""), attributes.kSecAttrAccount.value_or(""),
            attributes.kSecAttrAccessGroup.value_or("")};
}

Identity identityOf(const SqliteStatement& row, int column) {
    const auto text = [&](int offset) { return std::string{row.bytes(column + offset)}; };
    return {text(0), text(1), text(2), text(3)};
}

/// The SQL condition for the items that match a query's attributes.
class Matching {
public:
    explicit Matching(const KeychainAttributes& query)
        : query_{query} {
        for (const auto& [column, value] : comparisons()) {
            if (*value) {
                condition_ += std::string{" AND "} + column + " = ?";
            }
        }
    }

    const std::string& condition() const { return condition_; }

    void bind(SqliteStatement& statement) const {
        statement.bindText(query_.kSecClass);
        for (const auto& [column, value] : comparisons()) {
            if (*value) {
                statement.bindText(**value);
            }
        }
    }

private:
    std::vector<std::pair<const char*, const std::optional<std::string>*>> comparisons() const {
        return {{"service", &query_.kSecAttrService},
                {"account", &query_.kSecAttrAccount},
                {"access_group", &query_.kSecAttrAccessGroup},
                {"generic", &query_.kSecAttrGeneric},
                {"accessible", &query_.kSecAttrAccessible}};
    }

    const KeychainAttributes& query_;
    std::string condition_{"class = ?"};
};

void bindOptional(SqliteStatement& statement, const std::optional<std::string>& text) {
    if (text) {
        statement.bindText(*text);
    } else {
        statement.bindNull();
    }
}

class SqliteKeychain final : public Keychain {
public:
    SqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics, std::chrono::milliseconds patience)
        : diagnostics_{std::move(diagnostics)}
        , patience_{patience}
        , file_{std::move(folder)} {}

    OSStatus SecItemAdd(const KeychainAttributes& attributes) override {
        return perform(Purpose::store, [&] { return add(attributes); });
    }

    OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) override {
        return perform(Purpose::read, [&] { return copy(query, query.kSecReturnData ? result : nullptr); });
    }

    OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) override {
        return perform(Purpose::store, [&] { return update(query, change); });
    }

    OSStatus SecItemDelete(const KeychainAttributes& query) override {
        return perform(Purpose::remove, [&] { return remove(query); });
    }

private:
    template <typename Operation>
    OSStatus perform(Purpose purpose, Operation operation) {
        const auto deadline = std::chrono::steady_clock::now() + patience_;
        // A forked child has neither SQLite's locks nor the threads that were using the keychain.
        if (const auto user = user_.load(); user != 0 && user != getpid()) {
            if (!isForkTold_.exchange(true)) {
                diagnostics_->report("keychain", "The process was forked after its keychain was used, so the keychain "
                                                 "cannot be used here; have the child execute a program first.");
            }
            return errSecNotAvailable;
        }
        user_ = getpid();
        std::vector<std::string> reports;
        OSStatus status = errSecNotAvailable;
        if (const auto lock = mutex_.lock(deadline)) {
            status = performAlone(purpose, operation, deadline);
            reports = file_.takeReports();
        } else {
            reports.emplace_back("A call to the keychain waited too long for the call of another thread.");
        }
        // Outside the lock: the host's diagnostics may call the keychain again.
        for (const auto& report : reports) {
            diagnostics_->report("keychain", report);
        }
        return status;
    }

    template <typename Operation>
    OSStatus performAlone(Purpose purpose, Operation operation, KeychainFile::Deadline deadline) {
        OSStatus status = errSecSuccess;
        for (int attempt = 0; attempt < 2; ++attempt) {
            status = file_.open(purpose, deadline);
            if (status != errSecSuccess) {
                return status;
            }
            status = inTransaction(purpose, operation);
            if (status != errSecDecode || !file_.closeIfDoubtful()) {
                break;
            }
        }
        return status;
    }

    template <typename Operation>
    OSStatus inTransaction(Purpose purpose, Operation operation) {
        auto& database = file_.database();
        const auto* const begin = purpose == Purpose::read ? "BEGIN" : "BEGIN IMMEDIATE";
        auto status = database.run(begin) == SQLITE_OK ? file_.checkMark() : file_.failure();
        if (status == errSecSuccess) {
            status = operation();
        }
        if (status == errSecSuccess && database.run("COMMIT") != SQLITE_OK) {
            status = file_.failure();
        }
        if (database.isInTransaction()) {
            database.run("ROLLBACK");
        }
        return status;
    }

    OSStatus add(const KeychainAttributes& attributes) {
        const auto identity = identityOf(attributes);
        const auto value = attributes.kSecValueData ? std::string_view{*attributes.kSecValueData} : "";
        const auto sealed = seal(*file_.key(), identity.associatedData(), value);
        if (!sealed) {
            return errSecParam;
        }
        auto insert = file_.database().prepare(
            "INSERT INTO items(class, service, account, access_group, generic, accessible, value) "
            "VALUES(?, ?, ?, ?, ?, ?, ?)");
        if (!insert) {
            return file_.failure();
        }
        insert->bindText(identity.itemClass);
        insert->bindText(identity.service);
        insert->bindText(identity.account);
        insert->bindText(identity.accessGroup);
        bindOptional(*insert, attributes.kSecAttrGeneric);
        bindOptional(*insert, attributes.kSecAttrAccessible);
        insert->bindBlob(*sealed);
        return insert->step() == SQLITE_DONE ? errSecSuccess : file_.failure();
    }

    OSStatus copy(const KeychainAttributes& query, std::string* result) {
        const Matching matching{query};
        auto select = file_.database().prepare("SELECT class, service, account, access_group, value FROM items WHERE " +
                                               matching.condition() + " ORDER BY id LIMIT 1");
        if (!select) {
            return file_.failure();
        }
        matching.bind(*select);
        const int step = select->step();
        if (step != SQLITE_ROW) {
            return step == SQLITE_DONE ? errSecItemNotFound : file_.failure();
        }
        if (result == nullptr) {
            return errSecSuccess;
        }
        if (!file_.key()) {
            return errSecDecode;
        }
        auto value = unseal(*file_.key(), identityOf(*select, 0).associatedData(), select->bytes(4));
        if (!value) {
            file_.report("An item of the keychain does not open with its key: the database or the key file was "
                         "exchanged or altered. Store the item anew, or restore both files from a backup.");
            return errSecDecode;
        }
        result->swap(*value);
        wipe(*value);
        return errSecSuccess;
    }

    struct Found {
        Identity identity;
        std::int64_t id;
        bool isSame;
    };

    /// Whether the item of this row is the same after a change. Columns 5 and 6 hold the value and the accessibility.
    bool isSame(const SqliteStatement& row, const Identity& identity, const KeychainAttributes& change) {
        if (change.kSecAttrAccessible && *change.kSecAttrAccessible != row.bytes(6)) {
            return false;
        }
        if (!change.kSecValueData) {
            return true;
        }
        auto value = file_.key() ? unseal(*file_.key(), identity.associatedData(), row.bytes(5)) : std::nullopt;
        const bool same = value == change.kSecValueData;
        if (value) {
            wipe(*value);
        }
        return same;
    }

    OSStatus update(const KeychainAttributes& query, const KeychainAttributes& change) {
        const Matching matching{query};
        auto select = file_.database().prepare(
            "SELECT class, service, account, access_group, id, value, accessible FROM items WHERE " +
            matching.condition());
        if (!select) {
            return file_.failure();
        }
        matching.bind(*select);
        std::vector<Found> found;
        int step = SQLITE_ROW;
        while ((step = select->step()) == SQLITE_ROW) {
            auto identity = identityOf(*select, 0);
            const bool same = isSame(*select, identity, change);
            found.push_back({std::move(identity), select->integer(4), same});
        }
        if (step != SQLITE_DONE) {
            return file_.failure();
        }
        for (const auto& [identity, id, isSame] : found) {
            // An unchanged item needs no write, and so no wait for the disk.
            if (isSame) {
                continue;
            }
            if (const auto status = updateItem(identity, id, change); status != errSecSuccess) {
                return status;
            }
        }
        return found.empty() ? errSecItemNotFound : errSecSuccess;
    }

    OSStatus updateItem(const Identity& identity, std::int64_t id, const KeychainAttributes& change) {
        std::optional<std::string> sealed;
        if (change.kSecValueData) {
            sealed = seal(*file_.key(), identity.associatedData(), *change.kSecValueData);
            if (!sealed) {
                return errSecParam;
            }
        }
        auto update = file_.database().prepare(
            "UPDATE items SET value = coalesce(?, value), accessible = coalesce(?, accessible) WHERE id = ?");
        if (!update) {
            return file_.failure();
        }
        if (sealed) {
            update->bindBlob(*sealed);
        } else {
            update->bindNull();
        }
        bindOptional(*update, change.kSecAttrAccessible);
        update->bindInteger(id);
        return update->step() == SQLITE_DONE ? errSecSuccess : file_.failure();
    }

    OSStatus remove(const KeychainAttributes& query) {
        const Matching matching{query};
        auto erase = file_.database().prepare("DELETE FROM items WHERE " + matching.condition());
        if (!erase) {
            return file_.failure();
        }
        matching.bind(*erase);
        if (erase->step() != SQLITE_DONE) {
            return file_.failure();
        }
        return file_.database().changes() > 0 ? errSecSuccess : errSecItemNotFound;
    }

    const std::shared_ptr<Diagnostics> diagnostics_;
    const std::chrono::milliseconds patience_;
    /// The process that has used the keychain; 0 before the first call.
    std::atomic<pid_t> user_{0};
    std::atomic<bool> isForkTold_{false};
    DeadlineMutex mutex_;
    KeychainFile file_;
};

} // namespace

std::shared_ptr<Keychain> makeSqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics,
                                             std::chrono::milliseconds patience) {
    return std::make_shared<SqliteKeychain>(std::move(folder), std::move(diagnostics), patience);
}

} // namespace kivo::platform
