// What a keychain tells its caller, and its diagnostics, of errors of SQLite and of the system.
#include "platform/sqlite/KeychainFile.hpp"

#include <cerrno>
#include <utility>

namespace kivo::platform {

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

OSStatus KeychainFile::refuseChange() {
    if (whyAlone_) {
        return statusOf(whyAlone_->sqliteError, whyAlone_->systemError);
    }
    report("The keychain " + quoted(databasePath_) +
           " cannot be written; give this user write permission for the file and its folder.");
    return errSecReadOnly;
}

void KeychainFile::report(std::string text) {
    if (text != lastReport_) {
        reports_.push_back(text);
        lastReport_ = std::move(text);
    }
}

} // namespace kivo::platform
