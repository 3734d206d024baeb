#include "PinsFile.hpp"

#include "platform/bundle/PropertyListReader.hpp"
#include "program/Temporary.hpp"

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

namespace pins {
namespace {

namespace fs = std::filesystem;
namespace platform = kivo::platform;

std::string asPropertyList(const std::vector<std::string>& pins) {
    auto* const array = plist_new_array();
    for (const auto& pin : pins) {
        plist_array_append_item(array, plist_new_string(pin.c_str()));
    }
    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_xml(array, &text, &size);
    std::string xml{text, size};
    plist_to_xml_free(text);
    plist_free(array);
    return xml;
}

std::string cannotBeWritten(const fs::path& file, int reason) {
    return file.string() + " cannot be written (" + std::generic_category().message(reason) + ")";
}

/// The file that a chain of symbolic links leads to; it may not exist.
fs::path behindLinks(fs::path file) {
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int links = 0; links < mostLinks && fs::is_symlink(file, error); ++links) {
        file = file.parent_path() / fs::read_symlink(file, error);
    }
    return file;
}

/// Waits until no other process holds the folder's lock. Returns false after some seconds, or when there is no lock.
bool lock(int folder) {
    constexpr std::chrono::seconds patience{10};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (flock(folder, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    return true;
}

/// A name in the file's folder that is not in use.
fs::path draftFor(const fs::path& file) {
    std::random_device random;
    return file.parent_path() / std::string{"."}.append(file.filename()).append(".").append(std::to_string(random()));
}

bool writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const auto written = ::write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

/// Gives a draft the mode and the owner of the file that it replaces.
bool takeOver(int draft, const fs::path& file) {
    struct stat before{};
    if (stat(file.c_str(), &before) != 0) {
        return errno == ENOENT;
    }
    // The folder's permissions alone would let anybody replace a file that only its owner may change.
    return access(file.c_str(), W_OK) == 0 && fchown(draft, before.st_uid, before.st_gid) == 0 &&
           fchmod(draft, before.st_mode & 07777U) == 0;
}

} // namespace

std::expected<std::optional<kivo::PinList>, std::string> readList(const fs::path& file) {
    const auto bytes = platform::readFile(file);
    if (!bytes) {
        return std::unexpected{file.string() + " " + bytes.error()};
    }
    if (!*bytes) {
        return std::nullopt;
    }
    const auto root = platform::readPropertyList(**bytes);
    if (!root) {
        return std::unexpected{file.string() + " " + root.error()};
    }
    return kivo::pinListIn(*root);
}

std::expected<ListUnderChange, std::string> ListUnderChange::open(const fs::path& file) {
    auto target = behindLinks(file);
    const auto parent = target.parent_path();
    platform::FileDescriptor folder{::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (!folder) {
        return std::unexpected{cannotBeWritten(file, errno)};
    }
    if (!lock(folder.get())) {
        return std::unexpected{errno == EWOULDBLOCK ? file.string() + " is being written by another program"
                                                    : cannotBeWritten(file, errno)};
    }
    return ListUnderChange{file, std::move(target), std::move(folder)};
}

std::string ListUnderChange::write(const std::vector<std::string>& pins) const {
    platform::FileDescriptor draft;
    const program::Temporary name{[&] {
        auto path = draftFor(target_);
        draft = platform::FileDescriptor{::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)};
        return draft ? path : fs::path{};
    }};
    const bool isDone = draft && writeAll(draft.get(), asPropertyList(pins)) && takeOver(draft.get(), target_) &&
                        fsync(draft.get()) == 0 && rename(name.path().c_str(), target_.c_str()) == 0 &&
                        fsync(folder_.get()) == 0;
    return isDone ? "" : cannotBeWritten(file_, errno);
}

} // namespace pins
