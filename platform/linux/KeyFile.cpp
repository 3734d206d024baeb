#include "linux/KeyFile.hpp"

#include "linux/FileDescriptor.hpp"

#include <fcntl.h>
#include <openssl/rand.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>

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

int writeWhole(const std::filesystem::path& file, const SealingKey& key) {
    const FileDescriptor descriptor{open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)};
    if (!descriptor) {
        return errno;
    }
    const auto written = write(descriptor.get(), key.data(), key.size());
    if (written < 0) {
        return errno;
    }
    if (static_cast<std::size_t>(written) != key.size()) {
        return ENOSPC;
    }
    return fsync(descriptor.get()) == 0 ? 0 : errno;
}

} // namespace

std::expected<SealingKey, KeyFileError> readKeyFile(const std::filesystem::path& file) {
    const FileDescriptor descriptor{open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    if (!descriptor) {
        return std::unexpected{errno == ENOENT ? KeyFileError::missing : KeyFileError::unreadable};
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
    auto draft = file;
    draft += ".new-" + std::to_string(getpid());
    unlink(draft.c_str());
    int error = writeWhole(draft, key);
    // A link, unlike a rename, leaves a file alone that is there already.
    if (error == 0 && link(draft.c_str(), file.c_str()) != 0) {
        error = errno;
    }
    unlink(draft.c_str());
    if (error == EEXIST) {
        return readKeyFile(file);
    }
    if (error != 0) {
        return std::unexpected{errorOf(error)};
    }
    const FileDescriptor folder{open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (folder) {
        fsync(folder.get());
    }
    return key;
}

} // namespace kivo::platform
