#include "platform/sqlite/KeychainFile.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <utility>

namespace kivo::platform {
namespace {

constexpr auto databaseName = "keychain.db";

// The database comes last: a new database must never find the journal of an old database.
constexpr std::array suffixes{"-journal", "-wal", "-shm", ""};

std::string timestamp() {
    const auto now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

/// A mark for a file's name, with the time and, if need be, a number that no other file of the folder has.
std::string freeMark(const PrivateFolder& folder, const std::string& name, std::string_view state) {
    const auto mark = std::string{"."}.append(state).append("-").append(timestamp());
    auto candidate = mark;
    for (int number = 2; folder.has((name + candidate).c_str()) != false && number < 100; ++number) {
        candidate = mark + "-" + std::to_string(number);
    }
    return candidate;
}

} // namespace

KeychainFile::~KeychainFile() {
    // In a forked child, closing the connection would undo the parent's unfinished write.
    if (database_ && process_ != getpid()) {
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
    if (isReadOnly_ && purpose != Purpose::read) {
        report("The keychain " + quoted(databasePath_) +
               " cannot be written; give this user write permission for the file and its folder.");
        return errSecReadOnly;
    }
    return errSecSuccess;
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
    for (const auto* suffix : suffixes) {
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
    auto opened = SqliteDatabase::open(databasePath_);
    if (!opened) {
        return statusOf(opened.error(), errno);
    }
    database_ = std::move(*opened);
    database_->setDeadline(deadline_);
    process_ = getpid();
    struct stat file{};
    if (lstat(databasePath_.c_str(), &file) != 0) {
        return statusOf(FileProblem{.error = errno});
    }
    inode_ = file.st_ino;
    return setUp();
}

OSStatus KeychainFile::setUp() {
    const auto state = examine(*database_);
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
    // Nothing of a former value stays: every commit empties the journal, freed room is overwritten, and no temporary
    // files are written. A successful change is on the disk.
    const bool isReady = database_->run("PRAGMA journal_mode = TRUNCATE; PRAGMA synchronous = FULL; "
                                        "PRAGMA secure_delete = ON; PRAGMA temp_store = MEMORY") == SQLITE_OK &&
                         (state != KeychainState::fresh || createSchema(*database_) == SQLITE_OK);
    return isReady ? errSecSuccess : failure();
}

OSStatus KeychainFile::openKey(Purpose purpose) {
    const auto key = readKeyFile(*folder_);
    if (key) {
        key_ = *key;
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
    key_ = *key;
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
    for (const auto* suffix : suffixes) {
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

bool KeychainFile::closeIfDoubtful() {
    if (isDoubtful_) {
        close();
    }
    return isDoubtful_;
}

OSStatus KeychainFile::failure() {
    const int error = database_->lastError();
    isDoubtful_ = isDamage(error);
    return statusOf(error, database_->systemError());
}

OSStatus KeychainFile::statusOf(int sqliteError, int systemError) {
    if (isDamage(sqliteError)) {
        return errSecDecode;
    }
    switch (sqliteError & 0xFF) {
    case SQLITE_CONSTRAINT:
        return errSecDuplicateItem;
    case SQLITE_FULL:
        return statusOf(FileProblem{.error = ENOSPC});
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return statusOf(FileProblem{.error = EACCES});
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return statusOf(FileProblem{.error = ETIMEDOUT});
    case SQLITE_TOOBIG:
        return errSecParam;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return statusOf(FileProblem{.error = systemError != 0 ? systemError : EIO});
    default:
        report("The keychain " + quoted(databasePath_) + " gave the error \"" + sqlite3_errstr(sqliteError) + "\".");
        return errSecIO;
    }
}

OSStatus KeychainFile::statusOf(const FileProblem& problem) {
    const auto folder = quoted(where_.path());
    const auto reason = " (" + problem.text() + ")";
    switch (problem.error) {
    case 0:
        report("The keychain is not used: " + problem.refusal);
        return errSecNotAvailable;
    case ETIMEDOUT:
        report("The keychain in " + folder + " is held by another process; look for a process that has hung.");
        return errSecNotAvailable;
    case EMFILE:
    case ENFILE:
        report("The keychain in " + folder + " cannot be opened" + reason + "; " + descriptorRemedy + ".");
        return errSecNotAvailable;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        report("There is no room for the keychain in " + folder + reason +
               "; free some space. What was stored before is kept.");
        return errSecDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
        report("The keychain's folder " + folder + " cannot be written" + reason +
               "; give this user write permission for it.");
        return errSecReadOnly;
    default:
        report("The keychain's folder " + folder + " cannot be used" + reason + "; check the disk.");
        return errSecIO;
    }
}

bool KeychainFile::isStillInPlace() const {
    struct stat file{};
    return lstat(databasePath_.c_str(), &file) == 0 && file.st_ino == inode_;
}

void KeychainFile::close() {
    database_.reset();
    key_.reset();
}

void KeychainFile::report(std::string text) {
    if (text != lastReport_) {
        reports_.push_back(text);
        lastReport_ = std::move(text);
    }
}

} // namespace kivo::platform
