#pragma once

#include "platform/posix/PrivateFolder.hpp"
#include "platform/sqlite/KeyFile.hpp"
#include "platform/sqlite/SqliteDatabase.hpp"

#include <kivo/platform/Keychain.hpp>

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// The two files of a keychain, opened when first needed and mended when they are damaged. For one thread at a time.
class KeychainFile {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    enum class Purpose { read, remove, store };

    explicit KeychainFile(DataFolder where)
        : where_{std::move(where)} {}

    KeychainFile(const KeychainFile&) = delete;
    KeychainFile& operator=(const KeychainFile&) = delete;
    ~KeychainFile();

    /// Makes `database()` ready, which waits for other processes until the deadline. Every purpose but `read`
    /// needs a writable database. `store` creates missing files, and `key()` is present after a `store`.
    OSStatus open(Purpose purpose, Deadline deadline);

    SqliteDatabase& database() { return *database_; }

    /// Absent when the database was opened without its key.
    const std::optional<SealingKey>& key() const { return key_; }

    /// The keychain's status for the last error of the database, which is reported.
    OSStatus failure();

    /// Closes a database whose last failure says that it is damaged; false for any other failure. The next `open()`
    /// examines the file and puts a damaged one aside.
    bool closeIfDamaged();

    /// Keeps `text` for the diagnostics unless it was the last thing kept.
    void report(std::string text);

    /// What there is to tell since the last time.
    std::vector<std::string> takeReports() { return std::exchange(reports_, {}); }

private:
    OSStatus openFiles(Purpose purpose);
    OSStatus openDatabase(Purpose purpose);
    OSStatus connect();
    OSStatus setUp();
    OSStatus openKey(Purpose purpose);
    OSStatus createKey();
    OSStatus putDatabaseAside(std::string_view state, std::string_view why);
    OSStatus putAside(const std::string& name, const std::string& mark);
    OSStatus statusOf(int sqliteError, int systemError);
    OSStatus statusOf(const FileProblem& problem);
    bool holdsItems();
    bool isStillInPlace() const;
    void close();

    const DataFolder where_;
    Deadline deadline_;
    std::optional<PrivateFolder> folder_;
    std::filesystem::path databasePath_;
    std::unique_ptr<SqliteDatabase> database_;
    pid_t process_ = 0;
    ino_t inode_ = 0;
    bool isReadOnly_ = false;
    int lastFailure_ = 0;
    std::optional<SealingKey> key_;
    std::string lastReport_;
    std::vector<std::string> reports_;
};

} // namespace kivo::platform
