#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

using SealingKey = std::array<unsigned char, 32>;

/// Encrypts a value with AES-256-GCM and ties it to `identity`: it opens under the same identity only. Absent when
/// the cipher or the random source fails.
std::optional<std::string> seal(const SealingKey& key, std::string_view identity, std::string_view value);

/// The value again; absent when key, identity or a single bit differs.
std::optional<std::string> unseal(const SealingKey& key, std::string_view identity, std::string_view sealed);

} // namespace kivo::platform
