#pragma once

#include "platform/openssl/SealedValue.hpp"
#include "platform/posix/PrivateFolder.hpp"

#include <expected>
#include <optional>

namespace kivo::platform {

inline constexpr auto keyFileName = "keychain.key";

/// Reads the key of a keychain. The error is ENOENT without a key file, and EBADMSG when the file holds no key.
std::expected<SealingKey, FileProblem> readKeyFile(const PrivateFolder& folder);

/// Makes a new key and writes it to the disk. Needs the folder's lock.
std::expected<SealingKey, FileProblem> createKeyFile(const PrivateFolder& folder);

} // namespace kivo::platform
