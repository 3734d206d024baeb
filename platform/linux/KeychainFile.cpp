#include "linux/KeychainFile.hpp"

#include "linux/FileDescriptor.hpp"
#include "linux/QuotedPath.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <system_error>
#include <utility>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t formatVersion = 1;

constexpr auto schema = R"(
BEGIN IMMEDIATE;
CREATE TABLE IF NOT EXISTS items(
    id INTEGER PRIMARY KEY,
    class TEXT NOT NULL,
    service TEXT NOT NULL,
    account TEXT NOT NULL,
    access_group TEXT NOT NULL,
    generic TEXT,
    accessible TEXT,
    value BLOB NOT NULL,
    UNIQUE(class, service, account, access_group));
PRAGMA user_version = 1;
COMMIT;)";

bool isDamage(int sqliteError) {
    const int kind = sqliteError & 0xFF;
    return kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB;
}

std::string timestamp() {
    const auto now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
    return text.data();
}

fs::path withSuffix(fs::path path, std::string_view suffix) {
    path += suffix;
    return path;
}

/// A backup may have brought a file back that others can read.
void keepPrivate(const fs::path& file) {
    struct stat status{};
    if (stat(file.c_str(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        chmod(file.c_str(), status.st_mode & S_IRWXU);
    }
}

/// Held while the files are made, put aside or first looked at, so that two processes do not mend at once.
FileDescriptor lockFolder(const fs::path& folder) {
    FileDescriptor descriptor{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    while (descriptor && flock(descriptor.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return descriptor;
}

} // namespace

KeychainFile::KeychainFile(fs::path folder, std::shared_ptr<Diagnostics> diagnostics)
    : folder_{std::move(folder)}
    , databasePath_{folder_ / "keychain.db"}
    , keyPath_{folder_ / "keychain.key"}
    , diagnostics_{std::move(diagnostics)} {}

OSStatus KeychainFile::open(Purpose purpose) {
    // What could not be written when it was opened may be by now, and may have been by somebody else.
    if (database_ && (isReadOnly_ || !isStillInPlace())) {
        close();
    }
    if (!database_ || (purpose == Purpose::store && !key_)) {
        if (purpose == Purpose::store) {
            std::error_code error;
            fs::create_directories(folder_.parent_path(), error);
            if (mkdir(folder_.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
                return statusOfSystem(errno);
            }
        }
        const auto lock = lockFolder(folder_);
        if (const auto status = openDatabase(purpose); status != errSecSuccess) {
            return status;
        }
    }
    if (isReadOnly_ && purpose != Purpose::read) {
        report("The keychain " + quoted(databasePath_) +
               " cannot be written; give this user write permission for the file and its folder.");
        return errSecReadOnly;
    }
    return errSecSuccess;
}

OSStatus KeychainFile::openDatabase(Purpose purpose) {
    if (!database_) {
        std::error_code error;
        if (!fs::exists(databasePath_, error)) {
            if (purpose != Purpose::store) {
                return errSecItemNotFound;
            }
            if (const auto status = createDatabase(); status != errSecSuccess) {
                return status;
            }
        }
        auto status = connect();
        if (status == errSecDecode) {
            status = putAside(databasePath_, "corrupt", "is damaged");
            if (status == errSecSuccess) {
                return openDatabase(purpose);
            }
        }
        if (status != errSecSuccess) {
            close();
            return status;
        }
    }
    return openKey(purpose);
}

OSStatus KeychainFile::connect() {
    isReadOnly_ = false;
    // Ahead of the first look, which makes the journal with the mode of the database.
    for (const auto* suffix : {"", "-wal", "-shm"}) {
        keepPrivate(withSuffix(databasePath_, suffix));
    }
    auto opened = SqliteDatabase::open(databasePath_, SqliteDatabase::Mode::readWrite);
    if (!opened) {
        return connectReadOnly(opened.error());
    }
    database_ = std::move(*opened);
    const auto version = database_->number("PRAGMA user_version");
    if (!version || database_->isReadOnly()) {
        return isDamage(database_->lastError()) ? errSecDecode : connectReadOnly(database_->lastError());
    }
    return setUp();
}

OSStatus KeychainFile::connectReadOnly(int error) {
    // Without a journal beside it, the file is complete by itself.
    std::error_code unknown;
    const bool hasJournal = fs::exists(withSuffix(databasePath_, "-wal"), unknown);
    auto opened = SqliteDatabase::open(databasePath_,
                                       hasJournal ? SqliteDatabase::Mode::readOnly : SqliteDatabase::Mode::immutable);
    if (!opened) {
        return statusOf(error, errno);
    }
    database_ = std::move(*opened);
    isReadOnly_ = true;
    return setUp();
}

OSStatus KeychainFile::setUp() {
    struct stat file{};
    if (stat(databasePath_.c_str(), &file) != 0) {
        return statusOfSystem(errno);
    }
    inode_ = file.st_ino;
    const auto version = database_->number("PRAGMA user_version");
    if (version.value_or(0) > formatVersion) {
        report("The keychain " + quoted(databasePath_) +
               " was made by a newer release of this library; it is left as it is. Install the newer release again.");
        return errSecNotAvailable;
    }
    const auto isSound =
        version ? database_->number("SELECT quick_check = 'ok' FROM pragma_quick_check") : std::nullopt;
    if (!isSound) {
        // Only damage counts as damage: a check that could not be made says nothing about the file.
        return isDamage(database_->lastError()) ? errSecDecode : failure();
    }
    if (*isSound == 0) {
        return errSecDecode;
    }
    if (isReadOnly_) {
        return errSecSuccess;
    }
    // The journal is synced at every commit: what was answered with success survives a power cut.
    const bool isDone =
        database_->run("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA secure_delete = ON") ==
            SQLITE_OK &&
        (*version == formatVersion || database_->run(schema) == SQLITE_OK);
    return isDone ? errSecSuccess : failure();
}

OSStatus KeychainFile::createDatabase() {
    const FileDescriptor file{
        ::open(databasePath_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR)};
    return file || errno == EEXIST ? errSecSuccess : statusOfSystem(errno);
}

OSStatus KeychainFile::openKey(Purpose purpose) {
    const auto key = readKeyFile(keyPath_);
    if (key) {
        key_ = *key;
        return errSecSuccess;
    }
    key_.reset();
    if (key.error() == KeyFileError::unreadable) {
        report("The key file " + quoted(keyPath_) + " cannot be read; give this user read permission for it.");
        return errSecNotAvailable;
    }
    if (purpose == Purpose::store && !isReadOnly_) {
        return createKey();
    }
    if (database_->number("SELECT EXISTS(SELECT * FROM items)").value_or(0) != 0) {
        report("The keychain " + quoted(databasePath_) + " has no usable key file " + quoted(keyPath_) +
               ", so its values cannot be read; restore the key file from where the database came from.");
    }
    return errSecSuccess;
}

OSStatus KeychainFile::createKey() {
    if (database_->number("SELECT EXISTS(SELECT * FROM items)").value_or(0) != 0) {
        const auto status = putAside(databasePath_, "without-key", "has no usable key file");
        return status == errSecSuccess ? openDatabase(Purpose::store) : status;
    }
    std::error_code unknown;
    if (fs::exists(keyPath_, unknown)) {
        if (const auto status = putAside(keyPath_, "damaged", "is damaged"); status != errSecSuccess) {
            return status;
        }
    }
    const auto key = createKeyFile(keyPath_);
    if (key) {
        key_ = *key;
        return errSecSuccess;
    }
    switch (key.error()) {
    case KeyFileError::diskFull:
        return statusOfSystem(ENOSPC);
    case KeyFileError::notWritable:
        return statusOfSystem(EACCES);
    default:
        return statusOfSystem(EIO);
    }
}

OSStatus KeychainFile::putAside(const fs::path& file, std::string_view state, std::string_view why) {
    if (file == databasePath_) {
        close();
    }
    const auto mark = std::string{"."}.append(state).append("-").append(timestamp());
    auto aside = withSuffix(file, mark);
    std::error_code unknown;
    for (int number = 2; fs::exists(aside, unknown); ++number) {
        aside = withSuffix(file, mark + "-" + std::to_string(number));
    }
    // The journal goes first: a new database must never meet the old one's.
    for (const auto* suffix : {"-wal", "-shm", ""}) {
        const auto from = withSuffix(file, suffix);
        if (rename(from.c_str(), withSuffix(aside, suffix).c_str()) != 0 && errno != ENOENT) {
            return statusOfSystem(errno);
        }
    }
    report("The keychain's file " + quoted(file) + " " + std::string{why} + "; it is kept as " + quoted(aside) +
           " and a new one is made. Restore both files of the folder from a backup to get the old values back.");
    return errSecSuccess;
}

bool KeychainFile::putAsideIfDamaged() {
    if (!isDamage(database_->lastError())) {
        return false;
    }
    const auto lock = lockFolder(folder_);
    // Another process may have put it aside already; then there is nothing left to move.
    if (!isStillInPlace()) {
        close();
        return true;
    }
    return !isReadOnly_ && putAside(databasePath_, "corrupt", "is damaged") == errSecSuccess;
}

OSStatus KeychainFile::failure() {
    return statusOf(database_->lastError(), database_->systemError());
}

OSStatus KeychainFile::statusOf(int sqliteError, int systemError) {
    const auto tell = [&](std::string_view problem) {
        report("The keychain " + quoted(databasePath_) + " " + std::string{problem});
    };
    switch (sqliteError & 0xFF) {
    case SQLITE_CONSTRAINT:
        return errSecDuplicateItem;
    case SQLITE_FULL:
        return statusOfSystem(ENOSPC);
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return statusOfSystem(EACCES);
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return errSecDecode;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        tell("is locked by another process; look for one that does not let go of it.");
        return errSecNotAvailable;
    case SQLITE_TOOBIG:
        return errSecParam;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
        return systemError != 0 ? statusOfSystem(systemError) : statusOfSystem(EIO);
    default:
        tell("gave the error \"" + std::string{sqlite3_errstr(sqliteError)} + "\".");
        return errSecIO;
    }
}

OSStatus KeychainFile::statusOfSystem(int systemError) {
    const auto reason = " (" + std::generic_category().message(systemError) + ")";
    switch (systemError) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        report("There is no room for the keychain in " + quoted(folder_) + reason +
               "; free some space. What was stored before is kept.");
        return errSecDiskFull;
    case EACCES:
    case EPERM:
    case EROFS:
        report("The keychain's folder " + quoted(folder_) + " cannot be written" + reason +
               "; give this user write permission for it.");
        return errSecReadOnly;
    default:
        report("The keychain's folder " + quoted(folder_) + " cannot be used" + reason + "; check the disk.");
        return errSecIO;
    }
}

bool KeychainFile::isStillInPlace() const {
    struct stat file{};
    return stat(databasePath_.c_str(), &file) == 0 && file.st_ino == inode_;
}

void KeychainFile::close() {
    database_.reset();
    key_.reset();
}

void KeychainFile::report(std::string text) {
    if (text != lastReport_) {
        diagnostics_->report("keychain", text);
        lastReport_ = std::move(text);
    }
}

} // namespace kivo::platform
