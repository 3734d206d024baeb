#pragma once

#include "linux/SealedValue.hpp"

#include <expected>
#include <filesystem>

namespace kivo::platform {

/// Why a key file gives no key.
enum class KeyFileError {
    missing,
    damaged,
    unreadable,
    notWritable,
    diskFull,
};

/// Reads the key of a keychain.
std::expected<SealingKey, KeyFileError> readKeyFile(const std::filesystem::path& file);

/// Makes a key file that only its owner can read, whole from the first moment, or reads the one that another process
/// has made meanwhile.
std::expected<SealingKey, KeyFileError> createKeyFile(const std::filesystem::path& file);

} // namespace kivo::platform
