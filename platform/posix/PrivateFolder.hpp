#pragma once

#include "platform/posix/DataFolder.hpp"
#include "platform/posix/FileDescriptor.hpp"

#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// What keeps a file or a folder from being used.
struct FileProblem {
    /// The system's error number; 0 for a refusal.
    int error = 0;
    /// For a refusal: what is wrong with the file, and what to do.
    std::string refusal{};

    /// The refusal or the system's text.
    std::string text() const;
};

/// The folder of an application's secrets, held open. All of its files are opened and judged here.
///
/// An entry is refused that belongs to another user, that other users can write, that is a link or has a second name,
/// and that is neither a folder nor a regular file. No other user can write the folder, so an entry stays as judged.
class PrivateFolder {
public:
    enum class Missing { isAnError, isMade };

    /// Holds the lock of a folder.
    class Lock {
    public:
        explicit Lock(FileDescriptor descriptor)
            : descriptor_{std::move(descriptor)} {}

        Lock(Lock&&) = default;
        Lock& operator=(Lock&&) = delete;
        ~Lock();

    private:
        FileDescriptor descriptor_;
    };

    /// Opens a folder. Folders that are made get mode 0700 whatever the umask, and the library's own ones are taken
    /// from the view of others.
    static std::expected<PrivateFolder, FileProblem> open(const DataFolder& where, Missing missing);

    /// Without links, also in the folders above.
    const std::filesystem::path& path() const { return path_; }

    /// Keeps other processes from making or moving files until the lock goes, and removes what a process that was
    /// killed has left half-made. ETIMEDOUT when the deadline passes.
    std::expected<Lock, FileProblem> lock(std::chrono::steady_clock::time_point deadline) const;

    /// Whether there is a file that may be used, which is taken from the view of others. Does not open it.
    std::expected<bool, FileProblem> has(const char* name) const;

    /// The first bytes of a file, as many as it has or as there is room for.
    std::expected<std::size_t, FileProblem> read(const char* name, std::span<unsigned char> bytes) const;

    /// Makes a file, whole from the first moment and through a power cut. Needs the lock. 0 or an error number.
    int create(const char* name, std::string_view content) const;

    /// Renames a file, also over another one, or removes it; 0 or an error number.
    int rename(const char* name, const std::string& newName) const;
    int remove(const char* name) const;

private:
    PrivateFolder(FileDescriptor descriptor, std::filesystem::path path)
        : descriptor_{std::move(descriptor)}
        , path_{std::move(path)} {}

    FileDescriptor descriptor_;
    std::filesystem::path path_;
};

} // namespace kivo::platform
