#include "platform/posix/PrivateFolder.hpp"

#include "platform/posix/QuotedPath.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

namespace fs = std::filesystem;

constexpr auto draftName = ".draft";
constexpr mode_t ofOthers = S_IRWXG | S_IRWXO;

std::unexpected<FileProblem> systemProblem(int error) {
    return std::unexpected{FileProblem{.error = error}};
}

std::unexpected<FileProblem> refusal(std::string text) {
    return std::unexpected{FileProblem{.refusal = std::move(text)}};
}

/// The entry that `descriptor` refers to, if the entry has this type and only this user can change it.
std::expected<struct stat, FileProblem> judged(const FileDescriptor& descriptor, mode_t type, const fs::path& path) {
    struct stat entry{};
    if (fstat(descriptor.get(), &entry) != 0) {
        return systemProblem(errno);
    }
    const bool isFolder = type == S_IFDIR;
    if (S_ISLNK(entry.st_mode)) {
        return refusal(quoted(path) + " is a symbolic link; put what it leads to in its place.");
    }
    if ((entry.st_mode & S_IFMT) != type) {
        return refusal(quoted(path) + (isFolder ? " is no folder" : " is no regular file") + "; remove it.");
    }
    if (entry.st_uid != geteuid()) {
        return refusal(quoted(path) + " belongs to the user " + std::to_string(entry.st_uid) + " and not to the user " +
                       std::to_string(geteuid()) + ", who runs this program; remove it, or run as its owner.");
    }
    if ((entry.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return refusal(quoted(path) +
                       " can be written by other users; look at what it holds, then run \"chmod go-w\".");
    }
    if (!isFolder && entry.st_nlink > 1) {
        return refusal(quoted(path) + " has a second name elsewhere; remove one of them.");
    }
    return entry;
}

/// Goes by the descriptor, so that no link leads the change elsewhere. What can only be read keeps its mode. ENOSYS
/// where the system has no /proc.
int changeMode(const FileDescriptor& descriptor, mode_t mode) {
    const auto path = "/proc/self/fd/" + std::to_string(descriptor.get());
    if (chmod(path.c_str(), mode) == 0 || errno == EROFS) {
        return 0;
    }
    return errno == ENOENT ? ENOSYS : errno;
}

FileDescriptor readable(int folder) {
    return FileDescriptor{openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
}

/// One folder on the way to the data folder.
struct Step {
    fs::path name;
    bool isJudged;
    bool isOwn;
};

std::vector<Step> stepsTo(const DataFolder& where) {
    std::vector<Step> steps;
    for (const auto& name : fs::absolute(where.base).relative_path()) {
        if (!name.empty()) {
            steps.push_back({name, false, false});
        }
    }
    for (const auto& name : where.own) {
        steps.push_back({name, true, true});
    }
    if (!steps.empty()) {
        steps.back().isJudged = true;
    }
    return steps;
}

std::expected<FileDescriptor, FileProblem> descend(int parent, const Step& step, const fs::path& path,
                                                   PrivateFolder::Missing missing) {
    // Also a folder that cannot be read can be opened so, and opening a FIFO does not wait.
    const auto open = [&](int flags) {
        return FileDescriptor{openat(parent, step.name.c_str(), O_PATH | O_CLOEXEC | flags)};
    };
    auto folder = open(step.isJudged ? O_NOFOLLOW : O_DIRECTORY);
    bool isMade = false;
    if (!folder && errno == ENOENT && missing == PrivateFolder::Missing::isMade) {
        isMade = mkdirat(parent, step.name.c_str(), S_IRWXU) == 0;
        if (!isMade && errno != EEXIST) {
            return systemProblem(errno);
        }
        folder = open(O_NOFOLLOW);
    }
    if (!folder) {
        return systemProblem(errno);
    }
    if (!isMade && !step.isJudged) {
        return folder;
    }
    const auto entry = judged(folder, S_IFDIR, path);
    if (!entry) {
        return std::unexpected{entry.error()};
    }
    const mode_t mode = isMade ? S_IRWXU : entry->st_mode & (step.isOwn ? ~ofOthers : ~mode_t{0}) & ALLPERMS;
    if (mode != (entry->st_mode & ALLPERMS)) {
        if (const int error = changeMode(folder, mode); error != 0) {
            return systemProblem(error);
        }
    }
    if (isMade) {
        if (const auto named = readable(parent)) {
            fsync(named.get());
        }
    }
    return folder;
}

} // namespace

std::string FileProblem::text() const {
    return error != 0 ? std::generic_category().message(error) : refusal;
}

PrivateFolder::Lock::~Lock() {
    // A forked child may hold a copy of the descriptor, which would keep the lock beyond its closing.
    if (descriptor_) {
        flock(descriptor_.get(), LOCK_UN);
    }
}

std::expected<PrivateFolder, FileProblem> PrivateFolder::open(const DataFolder& where, Missing missing) {
    if (where.base.empty()) {
        return refusal("There is no folder for this user's data; set HOME or XDG_DATA_HOME.");
    }
    fs::path path{"/"};
    FileDescriptor current{::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!current) {
        return systemProblem(errno);
    }
    for (const auto& step : stepsTo(where)) {
        path /= step.name;
        auto next = descend(current.get(), step, path, missing);
        if (!next) {
            return std::unexpected{std::move(next.error())};
        }
        current = std::move(*next);
    }
    std::error_code unknown;
    auto real = fs::canonical(path, unknown);
    auto folder = readable(current.get());
    if (!folder) {
        return systemProblem(errno);
    }
    return PrivateFolder{std::move(folder), unknown ? std::move(path) : std::move(real)};
}

std::expected<PrivateFolder::Lock, FileProblem>
PrivateFolder::lock(std::chrono::steady_clock::time_point deadline) const {
    // Of its own, since a lock belongs to what was opened: two threads would share that of the folder.
    auto descriptor = readable(descriptor_.get());
    if (!descriptor) {
        return systemProblem(errno);
    }
    constexpr auto pause = std::chrono::milliseconds{5};
    while (flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return systemProblem(errno);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return systemProblem(ETIMEDOUT);
        }
        std::this_thread::sleep_for(pause);
    }
    remove(draftName);
    return Lock{std::move(descriptor)};
}

std::expected<bool, FileProblem> PrivateFolder::has(const char* name) const {
    // Closing a descriptor with access would end every lock that this process holds on the file, SQLite's too.
    const FileDescriptor file{openat(descriptor_.get(), name, O_PATH | O_NOFOLLOW | O_CLOEXEC)};
    if (!file) {
        return errno == ENOENT ? std::expected<bool, FileProblem>{false} : systemProblem(errno);
    }
    const auto entry = judged(file, S_IFREG, path_ / name);
    if (!entry) {
        return std::unexpected{entry.error()};
    }
    // A backup may have brought the file back so that others can read it.
    if ((entry->st_mode & ofOthers) != 0) {
        if (const int error = changeMode(file, entry->st_mode & S_IRWXU); error != 0) {
            return systemProblem(error);
        }
    }
    return true;
}

std::expected<std::size_t, FileProblem> PrivateFolder::read(const char* name, std::span<unsigned char> bytes) const {
    const auto isThere = has(name);
    if (!isThere) {
        return std::unexpected{isThere.error()};
    }
    const FileDescriptor file{openat(descriptor_.get(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    if (!file) {
        return systemProblem(errno);
    }
    const auto length = ::read(file.get(), bytes.data(), bytes.size());
    if (length < 0) {
        return systemProblem(errno);
    }
    return static_cast<std::size_t>(length);
}

int PrivateFolder::create(const char* name, std::string_view content) const {
    const FileDescriptor draft{
        openat(descriptor_.get(), draftName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR)};
    if (!draft) {
        return errno;
    }
    // The umask may have taken the owner's rights away.
    int error = fchmod(draft.get(), S_IRUSR | S_IWUSR) == 0 ? 0 : errno;
    if (error == 0 && !content.empty()) {
        const auto written = write(draft.get(), content.data(), content.size());
        error = written == static_cast<ssize_t>(content.size()) ? 0 : written < 0 ? errno : ENOSPC;
    }
    if (error == 0 && fsync(draft.get()) != 0) {
        error = errno;
    }
    if (error == 0) {
        error = rename(draftName, name);
    }
    if (error != 0) {
        remove(draftName);
    }
    return error;
}

int PrivateFolder::rename(const char* name, const std::string& newName) const {
    if (renameat(descriptor_.get(), name, descriptor_.get(), newName.c_str()) != 0) {
        return errno;
    }
    return fsync(descriptor_.get()) == 0 ? 0 : errno;
}

int PrivateFolder::remove(const char* name) const {
    return unlinkat(descriptor_.get(), name, 0) == 0 ? 0 : errno;
}

} // namespace kivo::platform
