#pragma once

#include "platform/openssl/OpenSslObjects.hpp"

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A key that the destructor wipes. For one thread at a time.
class SealingKey {
public:
    static constexpr std::size_t size = 32;

    SealingKey() = default;
    SealingKey(SealingKey&&) = default;
    SealingKey& operator=(SealingKey&&) = default;
    ~SealingKey();

    const unsigned char* data() const { return bytes_.data(); }

    enum class Direction { sealing, opening };

    /// The cipher with this key, ready for a value with `nonce`; null when the cipher fails. The key is expanded once
    /// for each direction, because the expansion takes longer than a short value.
    EVP_CIPHER_CTX* cipher(Direction direction, const unsigned char* nonce) const;

    /// Room for the key and for one byte more, which shows whether a key's source is too long.
    std::span<unsigned char> room() { return bytes_; }

private:
    using Cipher = std::unique_ptr<EVP_CIPHER_CTX, OpenSslFree<EVP_CIPHER_CTX_free>>;

    std::array<unsigned char, size + 1> bytes_{};
    /// One for each direction; null before the first use.
    mutable std::array<Cipher, 2> ciphers_;
};

/// Encrypts a value with AES-256-GCM and ties the result to `identity`: `unseal` needs the same identity. Absent when
/// the cipher or the random source fails.
std::optional<std::string> seal(const SealingKey& key, std::string_view identity, std::string_view value);

/// The size of a sealed value by that of the value.
std::size_t sealedSize(std::size_t size);

/// The value of a sealed value; absent when the key, the identity or a single bit differs.
std::optional<std::string> unseal(const SealingKey& key, std::string_view identity, std::string_view sealed);

} // namespace kivo::platform
