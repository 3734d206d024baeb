#include "platform/sqlite/KeyFile.hpp"

#include <openssl/rand.h>

#include <cerrno>
#include <span>

namespace kivo::platform {
namespace {

std::unexpected<FileProblem> problem(int error) {
    return std::unexpected{FileProblem{.error = error}};
}

} // namespace

std::expected<SealingKey, FileProblem> readKeyFile(const PrivateFolder& folder) {
    SealingKey key;
    const auto length = folder.read(keyFileName, key.room());
    if (!length) {
        return std::unexpected{length.error()};
    }
    if (*length != SealingKey::size) {
        return problem(EBADMSG);
    }
    return key;
}

std::expected<SealingKey, FileProblem> createKeyFile(const PrivateFolder& folder) {
    SealingKey key;
    if (RAND_bytes(key.room().data(), static_cast<int>(SealingKey::size)) != 1) {
        return problem(EIO);
    }
    if (const int error = folder.create(keyFileName, {reinterpret_cast<const char*>(key.data()), SealingKey::size});
        error != 0) {
        return problem(error);
    }
    return key;
}

} // namespace kivo::platform
