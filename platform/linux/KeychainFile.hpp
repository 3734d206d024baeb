#pragma once

#include "linux/KeyFile.hpp"
#include "linux/SqliteDatabase.hpp"

#include <kivo/platform/Diagnostics.hpp>
#include <kivo/platform/Keychain.hpp>

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The two files of a keychain, opened when first needed and mended when they are damaged. For one thread at a time.
class KeychainFile {
public:
    enum class Purpose { read, remove, store };

    KeychainFile(std::filesystem::path folder, std::shared_ptr<Diagnostics> diagnostics);

    /// Makes `database()` ready. A purpose other than `read` needs a writable one; `store` makes what is missing and
    /// makes `key()` present.
    OSStatus open(Purpose purpose);

    SqliteDatabase& database() { return *database_; }

    /// Absent when the database was opened without its key.
    const std::optional<SealingKey>& key() const { return key_; }

    /// The keychain's status for the last error of the database, which is told to the diagnostics.
    OSStatus failure();

    /// Puts the database aside when its last error was that it is damaged; false otherwise.
    bool putAsideIfDamaged();

    /// Tells `text` unless it was the last thing told.
    void report(std::string text);

private:
    OSStatus openDatabase(Purpose purpose);
    OSStatus connect();
    OSStatus connectReadOnly(int error);
    OSStatus setUp();
    OSStatus createDatabase();
    OSStatus openKey(Purpose purpose);
    OSStatus createKey();
    OSStatus putAside(const std::filesystem::path& file, std::string_view state, std::string_view why);
    OSStatus statusOf(int sqliteError, int systemError);
    OSStatus statusOfSystem(int systemError);
    bool isStillInPlace() const;
    void close();

    const std::filesystem::path folder_;
    const std::filesystem::path databasePath_;
    const std::filesystem::path keyPath_;
    const std::shared_ptr<Diagnostics> diagnostics_;
    std::unique_ptr<SqliteDatabase> database_;
    std::optional<SealingKey> key_;
    ino_t inode_ = 0;
    bool isReadOnly_ = false;
    std::string lastReport_;
};

} // namespace kivo::platform
