#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A key that the destructor wipes.
class SealingKey {
public:
    static constexpr std::size_t size = 32;

    SealingKey() = default;
    SealingKey(const SealingKey&) = default;
    SealingKey& operator=(const SealingKey&) = default;
    ~SealingKey();

    const unsigned char* data() const { return bytes_.data(); }

    /// Room for the key and for one byte more, which shows whether a key's source is too long.
    std::span<unsigned char> room() { return bytes_; }

private:
    std::array<unsigned char, size + 1> bytes_{};
};

/// Encrypts a value with AES-256-GCM and ties the result to `identity`: `unseal` needs the same identity. Absent when
/// the cipher or the random source fails.
std::optional<std::string> seal(const SealingKey& key, std::string_view identity, std::string_view value);

/// The size of a sealed value by that of the value.
std::size_t sealedSize(std::size_t size);

/// The value of a sealed value; absent when the key, the identity or a single bit differs.
std::optional<std::string> unseal(const SealingKey& key, std::string_view identity, std::string_view sealed);

} // namespace kivo::platform
