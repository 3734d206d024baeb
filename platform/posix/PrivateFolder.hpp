#pragma once

#include "platform/posix/Files.hpp"

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

/// The folder of an application's secrets. The base is empty when the user has no such folder.
struct DataFolder {
    DataFolder(std::filesystem::path folder, std::filesystem::path below = {})
        : base{std::move(folder)}
        , own{std::move(below)} {}

    std::filesystem::path path() const { return own.empty() ? base : base / own; }

    /// The folder that the user or the host has chosen.
    std::filesystem::path base;
    /// The folders below the base that belong to this library alone.
    std::filesystem::path own;
};

/// Why a file or a folder cannot be used.
struct FileProblem {
    /// The system's error number, or 0 for a refusal.
    int error = 0;
    /// Only for a refusal: the fault of the file, and the remedy.
    std::string refusal{};

    /// The refusal, or the system's text for the error number.
    std::string text() const;
};

/// The folder of an application's secrets, held open. All of its files are opened and judged here.
///
/// An entry is refused when it belongs to another user, when other users can write it, when it is a symbolic link, when
/// a second name exists for the same file, and when it is neither a folder nor a regular file. No other user can write
/// the folder, so the judgement stays true.
class PrivateFolder {
public:
    enum class Missing { isAnError, isMade };

    /// Holds the folder's lock until it is destroyed.
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

    /// Opens a folder. New folders get mode 0700 whatever the umask is. The library's own folders lose all rights of
    /// other users.
    static std::expected<PrivateFolder, FileProblem> open(const DataFolder& where, Missing missing);

    /// The folder's path, free of symbolic links.
    const std::filesystem::path& path() const { return path_; }

    /// Keeps other processes from making or moving files until the lock is destroyed. Removes the half-made file that a
    /// killed process left. ETIMEDOUT when the deadline passes.
    std::expected<Lock, FileProblem> lock(std::chrono::steady_clock::time_point deadline) const;

    /// Whether there is a file that may be used; the file loses all rights of other users. Does not open the file.
    std::expected<bool, FileProblem> has(const char* name) const;

    /// Reads the first bytes of a file, as many as the file has or `bytes` has room for; returns their number.
    std::expected<std::size_t, FileProblem> read(const char* name, std::span<unsigned char> bytes) const;

    /// Makes a file that is never seen incomplete, not even after a power cut. Needs the lock. 0 or an error number.
    int create(const char* name, std::string_view content) const;

    /// Renames a file, also over another file. 0 or an error number.
    int rename(const char* name, const std::string& newName) const;

    /// Removes a file. 0 or an error number.
    int remove(const char* name) const;

private:
    PrivateFolder(FileDescriptor descriptor, std::filesystem::path path)
        : descriptor_{std::move(descriptor)}
        , path_{std::move(path)} {}

    FileDescriptor descriptor_;
    std::filesystem::path path_;
};

} // namespace kivo::platform
