#pragma once

#include <unistd.h>

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>

namespace kivo::platform {

/// Owns a file descriptor; a negative number stands for no descriptor.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1)
        : descriptor_{descriptor} {}

    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_{std::exchange(other.descriptor_, -1)} {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }

    ~FileDescriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }

    int get() const { return descriptor_; }

    explicit operator bool() const { return descriptor_ >= 0; }

private:
    int descriptor_;
};

/// A path as messages name it.
inline std::string quoted(const std::filesystem::path& path) {
    return std::string{"\""}.append(path.string()).append("\"");
}

/// The remedy for EMFILE and ENFILE, as the end of a sentence.
inline constexpr auto descriptorRemedy = "close some files, or raise the limit with \"ulimit -n\"";

/// Whether the process can open only a few more files, if any.
bool isShortOfDescriptors();

/// The most bytes that a file of texts, settings or layouts may have.
inline constexpr std::size_t largestFile = std::size_t{4} << 20;

/// The bytes of a regular file, or nothing when no file has that name. The error says why the file cannot be read, as
/// the end of a sentence that begins with the file's name. Never waits, whatever kind of file the name belongs to.
std::expected<std::optional<std::string>, std::string> readFile(const std::filesystem::path& path);

} // namespace kivo::platform
