#pragma once

#include "platform/openssl/SealedValue.hpp"
#include "platform/posix/PrivateFolder.hpp"

#include <expected>
#include <optional>

namespace kivo::platform {

inline constexpr auto keyFileName = "keychain.key";

/// Reads the key of a keychain. ENOENT without a key file, EBADMSG when the file holds no key.
std::expected<SealingKey, FileProblem> readKeyFile(const PrivateFolder& folder);

/// Makes a new key, which is on the disk when this returns. Needs the folder's lock.
std::expected<SealingKey, FileProblem> createKeyFile(const PrivateFolder& folder);

} // namespace kivo::platform
