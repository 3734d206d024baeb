#pragma once

#include "platform/sqlite/SqliteKeychain.hpp"
#include "support/RecordedDiagnostics.hpp"
#include "support/TemporaryFolder.hpp"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace kivo::test {

/// An item of the account, or a query for it that gives its value back.
inline platform::KeychainAttributes item(std::string account, std::optional<std::string> value = {},
                                         std::optional<std::string> group = {}) {
    platform::KeychainAttributes attributes;
    attributes.kSecAttrService = "com.example.host";
    attributes.kSecAttrAccount = std::move(account);
    attributes.kSecAttrAccessGroup = std::move(group);
    attributes.kSecValueData = std::move(value);
    attributes.kSecReturnData = true;
    return attributes;
}

inline platform::KeychainAttributes value(std::string text) {
    platform::KeychainAttributes change;
    change.kSecValueData = std::move(text);
    return change;
}

inline mode_t modeOf(const std::filesystem::path& path) {
    struct stat file{};
    return lstat(path.c_str(), &file) == 0 ? file.st_mode & 07777 : 0;
}

/// A keychain in a folder of its own.
class KeychainFixture : public testing::Test {
protected:
    std::shared_ptr<platform::Keychain> open() const { return platform::makeSqliteKeychain(where, diagnostics); }

    /// The stored text, or the status.
    std::string read(const std::string& account, std::optional<std::string> group = {}) const {
        return read(*open(), account, std::move(group));
    }

    static std::string read(platform::Keychain& keychain, const std::string& account,
                            std::optional<std::string> group = {}) {
        std::string result;
        const auto status = keychain.SecItemCopyMatching(item(account, {}, std::move(group)), &result);
        return status == platform::errSecSuccess ? result : std::to_string(status);
    }

    /// Runs a statement on the database; returns the first value that it gives.
    std::string execute(const char* sql) const {
        sqlite3* database = nullptr;
        sqlite3_stmt* statement = nullptr;
        std::string result;
        EXPECT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_prepare_v2(database, sql, -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
        if (sqlite3_step(statement) == SQLITE_ROW) {
            result.assign(static_cast<const char*>(sqlite3_column_blob(statement, 0)),
                          static_cast<std::size_t>(sqlite3_column_bytes(statement, 0)));
        }
        EXPECT_EQ(sqlite3_finalize(statement), SQLITE_OK) << sqlite3_errmsg(database);
        sqlite3_close(database);
        return result;
    }

    std::set<std::string> filesPutAside() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator{folder}) {
            const auto name = entry.path().filename().string();
            if (const auto date = name.find("-20"); date != std::string::npos && !name.ends_with("-journal")) {
                names.insert(name.substr(0, date));
            }
        }
        return names;
    }

    /// In memory where there is such a place: the many syncs would wait for the disk.
    const TemporaryFolder parent{std::filesystem::exists("/dev/shm") ? "/dev/shm"
                                                                     : std::filesystem::temp_directory_path()};
    const platform::DataFolder where{parent.path(), "kivo/com.example.host"};
    const std::filesystem::path folder = where.path();
    const std::filesystem::path file = folder / "keychain.db";
    const std::shared_ptr<RecordedDiagnostics> diagnostics = std::make_shared<RecordedDiagnostics>();
};

} // namespace kivo::test
