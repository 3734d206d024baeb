#include "platform/sqlite/KeychainFile.hpp"

#include "platform/posix/ProcessNumber.hpp"
#include "platform/sqlite/NamesAside.hpp"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

constexpr auto databaseName = "keychain.db";

/// Whether an error means that the database's log, or the index of the log, cannot be made.
bool lacksLog(int sqliteError) {
    switch (sqliteError) {
    case SQLITE_IOERR_SHMOPEN:
    case SQLITE_IOERR_SHMSIZE:
    case SQLITE_IOERR_SHMMAP:
        return true;
    default:
        return (sqliteError & 0xFF) == SQLITE_CANTOPEN || (sqliteError & 0xFF) == SQLITE_READONLY;
    }
}

} // namespace

KeychainFile::~KeychainFile() {
    // In a forked child, closing the connection would undo the parent's unfinished write.
    if (database_ && process_ != processNumber()) {
        [[maybe_unused]] auto* const left = database_.release();
    }
}

OSStatus KeychainFile::open(Purpose purpose, Deadline deadline) {
    deadline_ = deadline;
    isDoubtful_ = false;
    // A database that was read-only when opened may be writable now, and another process may have written to it.
    if (database_ && (isReadOnly_ || !isStillInPlace())) {
        close();
    }
    if (!database_ || (purpose != Purpose::remove && !key_)) {
        if (const auto status = openFiles(purpose); status != errSecSuccess) {
            return status;
        }
    }
    database_->setDeadline(deadline);
    return isReadOnly_ && purpose == Purpose::store ? refuseChange() : errSecSuccess;
}

OSStatus KeychainFile::openFiles(Purpose purpose) {
    using enum PrivateFolder::Missing;
    auto folder = PrivateFolder::open(where_, purpose == Purpose::store ? isMade : isAnError);
    if (!folder) {
        const bool isAbsent = folder.error().error == ENOENT && purpose != Purpose::store;
        return isAbsent ? errSecItemNotFound : statusOf(folder.error());
    }
    folder_ = std::move(*folder);
    databasePath_ = folder_->path() / databaseName;
    // Held while the files are made, put aside or examined, so that two processes do not replace files at once.
    const auto lock = folder_->lock(deadline_);
    if (!lock) {
        return statusOf(lock.error());
    }
    auto status = openDatabase(purpose);
    if (status == errSecDecode) {
        status = putDatabaseAside("corrupt", "is damaged");
        if (status == errSecSuccess) {
            status = openDatabase(purpose);
        }
    }
    // A deletion needs no key.
    if (status == errSecSuccess && purpose != Purpose::remove) {
        status = openKey(purpose);
    }
    if (status != errSecSuccess) {
        close();
    }
    return status;
}

OSStatus KeychainFile::openDatabase(Purpose purpose) {
    if (database_) {
        return errSecSuccess;
    }
    bool isThere = false;
    for (const auto* suffix : databaseSuffixes) {
        const auto has = folder_->has((std::string{databaseName} + suffix).c_str());
        if (!has) {
            return statusOf(has.error());
        }
        isThere = *has;
    }
    if (!isThere) {
        if (purpose != Purpose::store) {
            return errSecItemNotFound;
        }
        if (const int error = folder_->create(databaseName, ""); error != 0) {
            return statusOf(FileProblem{.error = error});
        }
    }
    return connect();
}

OSStatus KeychainFile::connect() {
    whyAlone_.reset();
    auto status = connect(SqliteDatabase::Access::shared);
    if (status == errSecSuccess && database_->isReadOnly() && logIsEmpty()) {
        // Otherwise SQLite makes a log that this user cannot write later either.
        status = connect(SqliteDatabase::Access::fileAlone);
    }
    return status == errSecSuccess ? setUp() : status;
}

OSStatus KeychainFile::connect(SqliteDatabase::Access access) {
    auto opened = SqliteDatabase::open(databasePath_, access);
    if (!opened) {
        return statusOf(opened.error(), errno);
    }
    database_ = std::move(*opened);
    ++connections_;
    database_->setDeadline(deadline_);
    process_ = processNumber();
    struct stat file{};
    if (lstat(databasePath_.c_str(), &file) != 0) {
        return statusOf(FileProblem{.error = errno});
    }
    inode_ = file.st_ino;
    return errSecSuccess;
}

bool KeychainFile::logIsEmpty() const {
    std::error_code isAbsent;
    const auto size = std::filesystem::file_size(databasePath_.string() + "-wal", isAbsent);
    return isAbsent || size == 0;
}

OSStatus KeychainFile::setUp() {
    auto state = examine(*database_);
    if (const int error = database_->lastError(); state == KeychainState::unknown && lacksLog(error) && logIsEmpty()) {
        // The folder cannot be written, or the disk is full. The empty log shows that no process is writing, so reading
        // the file alone is safe.
        whyAlone_ = {.sqliteError = error, .systemError = database_->systemError()};
        if (const auto status = connect(SqliteDatabase::Access::fileAlone); status != errSecSuccess) {
            return status;
        }
        state = examine(*database_);
    }
    isReadOnly_ = database_->isReadOnly();
    if (state == KeychainState::damaged || database_->hasUnknownFormat()) {
        return errSecDecode;
    }
    if (state == KeychainState::unknown) {
        // SQLite's check reports no error for a page that could not be read.
        return database_->lastError() == SQLITE_OK ? statusOf(FileProblem{.error = EIO}) : failure();
    }
    if (state == KeychainState::newer) {
        report("The keychain " + quoted(databasePath_) +
               " was made by a newer release of this library; it is left as it is. Install the newer release again.");
        return errSecNotAvailable;
    }
    if (isReadOnly_) {
        return errSecSuccess;
    }
    // Nothing of a former value stays: freed room is overwritten, no temporary files are written, and `settle` empties
    // the log.
    const bool isReady = database_->run("PRAGMA secure_delete = ON; PRAGMA temp_store = MEMORY") == SQLITE_OK &&
                         database_->keepLog() == SQLITE_OK &&
                         (state != KeychainState::fresh || createSchema(*database_) == SQLITE_OK);
    if (!isReady) {
        return failure();
    }
    // What a killed process has left in the log. Another process that is at work settles the log itself.
    database_->setDeadline({});
    const int error = database_->emptyLog();
    database_->setDeadline(deadline_);
    return error == SQLITE_OK || error == SQLITE_BUSY ? errSecSuccess : failure();
}

OSStatus KeychainFile::settle() {
    return database_->emptyLog() == SQLITE_OK ? errSecSuccess : failure();
}

OSStatus KeychainFile::openKey(Purpose purpose) {
    auto key = readKeyFile(*folder_);
    if (key) {
        key_ = std::move(*key);
        return errSecSuccess;
    }
    key_.reset();
    const int error = key.error().error;
    if (error != ENOENT && error != EBADMSG) {
        if (error != 0) {
            report("The key file " + quoted(folder_->path() / keyFileName) + " cannot be read (" + key.error().text() +
                   "); give this user read permission for it.");
            return errSecNotAvailable;
        }
        return statusOf(key.error());
    }
    if (purpose == Purpose::store && !isReadOnly_) {
        return createKey();
    }
    if (holdsItems()) {
        report("The keychain " + quoted(databasePath_) + " has no usable key file " +
               quoted(folder_->path() / keyFileName) +
               ", so its values cannot be read; restore the key file from where the database came from.");
    }
    return errSecSuccess;
}

bool KeychainFile::holdsItems() {
    return database_->number("SELECT EXISTS(SELECT * FROM items)").value_or(0) != 0;
}

OSStatus KeychainFile::createKey() {
    if (holdsItems()) {
        if (const auto status = putDatabaseAside("without-key", "has no usable key file"); status != errSecSuccess) {
            return status;
        }
        if (const auto status = openDatabase(Purpose::store); status != errSecSuccess) {
            return status;
        }
    }
    const auto former = folder_->has(keyFileName);
    if (!former) {
        return statusOf(former.error());
    }
    if (*former) {
        // A damaged key file may still hold most of the key, so the file is not kept beside the values put aside.
        if (const int error = folder_->remove(keyFileName); error != 0) {
            return statusOf(FileProblem{.error = error});
        }
        report("The keychain's key file " + quoted(folder_->path() / keyFileName) + " is damaged; a new one is made.");
    }
    auto key = createKeyFile(*folder_);
    if (!key) {
        return statusOf(key.error());
    }
    key_ = std::move(*key);
    return errSecSuccess;
}

OSStatus KeychainFile::putDatabaseAside(std::string_view state, std::string_view why) {
    close();
    // The host may have meant to delete a value, which is impossible in a damaged database. Without the key, no value
    // can be read, so the key is removed before the database is moved.
    if (state == "corrupt") {
        if (const int error = folder_->remove(keyFileName); error != 0 && error != ENOENT) {
            return statusOf(FileProblem{.error = error});
        }
    }
    const auto mark = freeMark(*folder_, databaseName, state);
    if (const auto status = putAside(databaseName, mark); status != errSecSuccess) {
        return status;
    }
    report("The keychain's file " + quoted(databasePath_) + " " + std::string{why} + "; it is kept as \"" +
           databaseName + mark +
           "\", where its values cannot be opened, and a new one is made. Restore both files of " +
           "the folder from a backup to get the old values back.");
    return errSecSuccess;
}

OSStatus KeychainFile::putAside(const std::string& name, const std::string& mark) {
    for (const auto* suffix : databaseSuffixes) {
        const int error = folder_->rename((name + suffix).c_str(), name + mark + suffix);
        if (error != 0 && error != ENOENT) {
            return statusOf(FileProblem{.error = error});
        }
    }
    return errSecSuccess;
}

OSStatus KeychainFile::checkMark() {
    const auto mark = markOf(*database_);
    if (!mark) {
        return failure();
    }
    isDoubtful_ = *mark != markOfThisRelease;
    return isDoubtful_ ? errSecDecode : errSecSuccess;
}

bool KeychainFile::isStillInPlace() const {
    struct stat file{};
    return lstat(databasePath_.c_str(), &file) == 0 && file.st_ino == inode_;
}

void KeychainFile::close() {
    database_.reset();
    key_.reset();
}

} // namespace kivo::platform
