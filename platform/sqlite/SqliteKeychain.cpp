#include "platform/sqlite/SqliteKeychain.hpp"

#include "platform/openssl/SealedValue.hpp"
#include "platform/posix/DeadlineMutex.hpp"
#include "platform/posix/ProcessNumber.hpp"
#include "platform/sqlite/KeychainFile.hpp"
#include "platform/sqlite/KeychainQuery.hpp"
#include "platform/sqlite/LastRead.hpp"

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

using Purpose = KeychainFile::Purpose;

class SqliteKeychain final : public Keychain {
public:
    SqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics, std::chrono::milliseconds patience)
        : diagnostics_{std::move(diagnostics)}
        , patience_{patience}
        , file_{std::move(folder)} {}

    OSStatus SecItemAdd(const KeychainAttributes& attributes) override {
        return perform(Purpose::store, [&] { return change([&] { return add(attributes); }); });
    }

    OSStatus SecItemCopyMatching(const KeychainAttributes& query, std::string* result) override {
        return perform(Purpose::read, [&] { return read(query, query.kSecReturnData ? result : nullptr); });
    }

    OSStatus SecItemUpdate(const KeychainAttributes& query, const KeychainAttributes& change) override {
        return perform(Purpose::store, [&] { return this->change([&] { return update(query, change); }); });
    }

    OSStatus SecItemDelete(const KeychainAttributes& query) override {
        return perform(Purpose::remove, [&] {
            if (!file_.isReadOnly()) {
                return change([&] { return remove(query); });
            }
            const auto status = inTransaction("BEGIN", [&] { return copy(query, nullptr); });
            return status == errSecSuccess ? file_.refuseChange() : status;
        });
    }

    OSStatus SecItemStoreAll(std::span<const KeychainAttributes> items, KeychainDurability durability) override {
        return perform(Purpose::store, [&] {
            return change(
                [&] {
                    auto status = errSecSuccess;
                    for (auto item = items.begin(); item != items.end() && status == errSecSuccess; ++item) {
                        status = put(*item);
                    }
                    return status;
                },
                durability);
        });
    }

private:
    template <typename Operation>
    OSStatus perform(Purpose purpose, Operation operation) {
        const auto deadline = std::chrono::steady_clock::now() + patience_;
        // A forked child has neither SQLite's locks nor the threads that were using the keychain.
        const auto process = processNumber();
        if (const auto user = user_.load(); user != 0 && user != process) {
            if (!isForkTold_.exchange(true)) {
                diagnostics_->report("keychain", "The process was forked after its keychain was used, so the keychain "
                                                 "cannot be used here; have the child execute a program first.");
            }
            return errSecNotAvailable;
        }
        user_ = process;
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
            status = operation();
            if (status != errSecDecode || !file_.closeIfDoubtful()) {
                break;
            }
        }
        return status;
    }

    template <typename Operation>
    OSStatus change(Operation operation, KeychainDurability durability = KeychainDurability::atOnce) {
        auto status = inTransaction("BEGIN IMMEDIATE", [&] {
            last_.beginChange(file_);
            return operation();
        });
        if (status == errSecSuccess && durability == KeychainDurability::atOnce) {
            status = file_.settle();
        }
        if (status == errSecSuccess) {
            last_.endChange(file_);
        } else {
            last_.forget();
        }
        return status;
    }

    OSStatus read(const KeychainAttributes& query, std::string* result) {
        const auto* const known = result != nullptr ? last_.find(query, file_) : nullptr;
        if (known != nullptr) {
            *result = *known;
            return errSecSuccess;
        }
        const auto version = file_.database().version();
        FoundItem found;
        const auto status = inTransaction("BEGIN", [&] { return copy(query, result, &found); });
        if (status == errSecSuccess && result != nullptr) {
            last_.keep(query, std::move(found), *result, file_.connections(), version);
        }
        return status;
    }

    template <typename Operation>
    OSStatus inTransaction(const char* begin, Operation operation) {
        auto& database = file_.database();
        auto status = database.runAgain(begin) == SQLITE_OK ? file_.checkMark() : file_.failure();
        if (status == errSecSuccess) {
            status = operation();
        }
        if (status == errSecSuccess && database.runAgain("COMMIT") != SQLITE_OK) {
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
        insert->bindText(attributes.kSecAttrGeneric);
        insert->bindText(attributes.kSecAttrAccessible);
        insert->bindBlob(*sealed);
        last_.forget();
        return insert->step() == SQLITE_DONE ? errSecSuccess : file_.failure();
    }

    /// Stores the value of an item that may be there already.
    OSStatus put(const KeychainAttributes& item) {
        KeychainAttributes query;
        query.kSecClass = item.kSecClass;
        query.kSecAttrService = item.kSecAttrService.value_or("");
        query.kSecAttrAccessGroup = item.kSecAttrAccessGroup.value_or("");
        query.kSecAttrAccount = item.kSecAttrAccount.value_or("");
        KeychainAttributes change;
        change.kSecValueData = item.kSecValueData.value_or("");
        const auto* const known = last_.itemWith(identityOf(query));
        auto status = errSecSuccess;
        if (known == nullptr) {
            status = update(query, change);
        } else if (last_.value() != *change.kSecValueData) {
            status = updateItem(known->identity, known->id, change);
        }
        wipe(*change.kSecValueData);
        return status == errSecItemNotFound ? add(item) : status;
    }

    /// `result` and `found` may be null.
    OSStatus copy(const KeychainAttributes& query, std::string* result, FoundItem* found = nullptr) {
        const Matching matching{query};
        auto select = file_.database().prepare(matching.statement(
            "SELECT class, service, account, access_group, value, id FROM items", " ORDER BY id LIMIT 1"));
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
        auto identity = identityOf(*select, 0);
        auto value = unseal(*file_.key(), identity.associatedData(), select->bytes(4));
        if (!value) {
            file_.report("An item of the keychain does not open with its key: the database or the key file was "
                         "exchanged or altered. Store the item anew, or restore both files from a backup.");
            return errSecDecode;
        }
        result->swap(*value);
        wipe(*value);
        if (found != nullptr) {
            *found = {.identity = std::move(identity), .id = select->integer(5)};
        }
        return errSecSuccess;
    }

    /// Whether the item of this row is the same after a change. Columns 5 and 6 hold the value and the accessibility.
    bool isSame(const SqliteStatement& row, const Identity& identity, const KeychainAttributes& change) {
        if (change.kSecAttrAccessible && *change.kSecAttrAccessible != row.bytes(6)) {
            return false;
        }
        if (!change.kSecValueData) {
            return true;
        }
        if (row.bytes(5).size() != sealedSize(change.kSecValueData->size())) {
            return false;
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
            matching.statement("SELECT class, service, account, access_group, id, value, accessible FROM items"));
        if (!select) {
            return file_.failure();
        }
        matching.bind(*select);
        std::vector<FoundItem> changed;
        bool isFound = false;
        int step = SQLITE_ROW;
        while ((step = select->step()) == SQLITE_ROW) {
            isFound = true;
            auto identity = identityOf(*select, 0);
            // An unchanged item needs no write, and so no wait for the disk.
            if (!isSame(*select, identity, change)) {
                changed.push_back({std::move(identity), select->integer(4)});
            }
        }
        if (step != SQLITE_DONE) {
            return file_.failure();
        }
        for (const auto& [identity, id] : changed) {
            if (const auto status = updateItem(identity, id, change); status != errSecSuccess) {
                return status;
            }
        }
        return isFound ? errSecSuccess : errSecItemNotFound;
    }

    OSStatus updateItem(const Identity& identity, std::int64_t id, const KeychainAttributes& change) {
        std::optional<std::string> sealed;
        if (change.kSecValueData) {
            sealed = seal(*file_.key(), identity.associatedData(), *change.kSecValueData);
            if (!sealed) {
                return errSecParam;
            }
        }
        // The index has the accessibility in it, and a statement that names the column writes the index anew.
        const bool isValueAlone = sealed && !change.kSecAttrAccessible;
        auto update = file_.database().prepare(
            isValueAlone
                ? "UPDATE items SET value = ? WHERE id = ?"
                : "UPDATE items SET value = coalesce(?, value), accessible = coalesce(?, accessible) WHERE id = ?");
        if (!update) {
            return file_.failure();
        }
        update->bindBlob(sealed);
        if (isValueAlone) {
            last_.replace(id, *change.kSecValueData);
        } else {
            update->bindText(change.kSecAttrAccessible);
            last_.forget();
        }
        update->bindInteger(id);
        return update->step() == SQLITE_DONE ? errSecSuccess : file_.failure();
    }

    OSStatus remove(const KeychainAttributes& query) {
        const Matching matching{query};
        auto erase = file_.database().prepare(matching.statement("DELETE FROM items"));
        if (!erase) {
            return file_.failure();
        }
        matching.bind(*erase);
        last_.forget();
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
    LastRead last_;
};

} // namespace

std::shared_ptr<Keychain> makeSqliteKeychain(DataFolder folder, std::shared_ptr<Diagnostics> diagnostics,
                                             std::chrono::milliseconds patience) {
    return std::make_shared<SqliteKeychain>(std::move(folder), std::move(diagnostics), patience);
}

} // namespace kivo::platform
