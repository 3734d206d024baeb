#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A key, wiped when it goes.
class SealingKey {
public:
    static constexpr std::size_t size = 32;

    SealingKey() = default;
    SealingKey(const SealingKey&) = default;
    SealingKey& operator=(const SealingKey&) = default;
    ~SealingKey();

    const unsigned char* data() const { return bytes_.data(); }

    /// Room for the key and for one byte more, which shows that a source is too long.
    std::span<unsigned char> room() { return bytes_; }

private:
    std::array<unsigned char, size + 1> bytes_{};
};

/// Encrypts a value with AES-256-GCM and ties it to `identity`: it opens under the same identity only. Absent when
/// the cipher or the random source fails.
std::optional<std::string> seal(const SealingKey& key, std::string_view identity, std::string_view value);

/// The value again; absent when key, identity or a single bit differs.
std::optional<std::string> unseal(const SealingKey& key, std::string_view identity, std::string_view sealed);

} // namespace kivo::platform
