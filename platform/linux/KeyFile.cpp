#include "linux/KeyFile.hpp"

#include "linux/FileDescriptor.hpp"
#include "linux/WholeFile.hpp"

#include <fcntl.h>
#include <openssl/rand.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

namespace kivo::platform {
namespace {

KeyFileError errorOf(int errorNumber) {
    switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
        return KeyFileError::missing;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return KeyFileError::diskFull;
    case EROFS:
    case EACCES:
    case EPERM:
        return KeyFileError::notWritable;
    default:
        return KeyFileError::unreadable;
    }
}

} // namespace

std::expected<SealingKey, KeyFileError> readKeyFile(const std::filesystem::path& file) {
    const FileDescriptor descriptor{open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    if (!descriptor) {
        return std::unexpected{errno == ENOENT ? KeyFileError::missing : KeyFileError::unreadable};
    }
    struct stat status{};
    if (fstat(descriptor.get(), &status) == 0 && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        // A backup may have brought it back so that others can read it.
        fchmod(descriptor.get(), status.st_mode & S_IRWXU);
    }
    // One byte more than a key has shows a file that is too long.
    std::array<unsigned char, SealingKey{}.size() + 1> content{};
    const auto length = read(descriptor.get(), content.data(), content.size());
    if (length < 0) {
        return std::unexpected{KeyFileError::unreadable};
    }
    SealingKey key{};
    if (static_cast<std::size_t>(length) != key.size()) {
        return std::unexpected{KeyFileError::damaged};
    }
    std::copy_n(content.begin(), key.size(), key.begin());
    return key;
}

std::expected<SealingKey, KeyFileError> createKeyFile(const std::filesystem::path& file) {
    SealingKey key{};
    if (RAND_bytes(key.data(), static_cast<int>(key.size())) != 1) {
        return std::unexpected{KeyFileError::unreadable};
    }
    const int error = createWholeFile(file, {reinterpret_cast<const char*>(key.data()), key.size()});
    if (error == EEXIST) {
        return readKeyFile(file);
    }
    if (error != 0) {
        return std::unexpected{errorOf(error)};
    }
    return key;
}

} // namespace kivo::platform
