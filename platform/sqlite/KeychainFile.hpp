#pragma once

#include "platform/posix/PrivateFolder.hpp"
#include "platform/sqlite/KeyFile.hpp"
#include "platform/sqlite/KeychainDatabase.hpp"

#include <kivo/platform/Keychain.hpp>

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// The two files of a keychain, which are opened at first use and replaced when damaged. For one thread at a time.
class KeychainFile {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    enum class Purpose { read, remove, store };

    explicit KeychainFile(DataFolder where)
        : where_{std::move(where)} {}

    KeychainFile(const KeychainFile&) = delete;
    KeychainFile& operator=(const KeychainFile&) = delete;
    ~KeychainFile();

    /// Makes `database()` ready, and waits for other processes until the deadline. `store` creates missing files and
    /// needs a writable database, and `key()` is present afterwards.
    OSStatus open(Purpose purpose, Deadline deadline);

    SqliteDatabase& database() { return *database_; }

    bool isReadOnly() const { return isReadOnly_; }

    /// Reports why a database that is read-only cannot be changed, and returns the status.
    OSStatus refuseChange();

    /// Has every commit so far on the disk, and every former value overwritten, when it returns with success.
    OSStatus settle();

    /// Grows whenever `database()` becomes another object.
    std::uint64_t connections() const { return connections_; }

    /// `errSecDecode` when the open database no longer carries the mark of this release. Another process cannot change
    /// the mark during a transaction.
    OSStatus checkMark();

    /// Absent when the database was opened without its key.
    const std::optional<SealingKey>& key() const { return key_; }

    /// Reports the last error of the database and returns the keychain's status for the error.
    OSStatus failure();

    /// Closes the database after a sign of damage or of another release; false after any other failure. The next
    /// `open()` examines the file, and puts a damaged file aside.
    bool closeIfDoubtful() {
        if (isDoubtful_) {
            close();
        }
        return isDoubtful_;
    }

    /// Keeps `text` for the diagnostics unless the last text kept was the same.
    void report(std::string text);

    /// Takes the texts that were kept since the last call.
    std::vector<std::string> takeReports() { return std::exchange(reports_, {}); }

private:
    OSStatus openFiles(Purpose purpose);
    OSStatus openDatabase(Purpose purpose);
    OSStatus connect();
    OSStatus connect(SqliteDatabase::Access access);
    bool logIsEmpty() const;
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
    std::uint64_t connections_ = 0;
    pid_t process_ = 0;
    ino_t inode_ = 0;
    bool isReadOnly_ = false;

    struct Errors {
        int sqliteError;
        int systemError;
    };

    /// The errors for which the file is read alone, without its log.
    std::optional<Errors> whyAlone_;
    bool isDoubtful_ = false;
    std::optional<SealingKey> key_;
    std::string lastReport_;
    std::vector<std::string> reports_;
};

} // namespace kivo::platform
