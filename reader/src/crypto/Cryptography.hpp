#pragma once

#include <kivo/reader/Card.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

/// The cryptography of the access protocols (ICAO Doc 9303 part 11), over OpenSSL. The functions throw
/// `std::runtime_error` when OpenSSL itself fails, which only a lack of memory or of randomness brings about.
namespace kivo::reader {

/// Makes OpenSSL ready, with its handler for the process's exit. Does nothing at a further call.
void prepareCryptography();

/// Releases what OpenSSL keeps for the calling thread. Otherwise OpenSSL does so at the thread's end, for which an
/// exiting process does not wait.
void endCryptographyOfThread();

/// Overwrites memory that held a secret.
void wipe(void* memory, std::size_t size);

/// Memory that is overwritten before it is given back.
template <class T>
struct WipingAllocator {
    using value_type = T;
    WipingAllocator() = default;

    template <class Other>
    WipingAllocator(const WipingAllocator<Other>& /*other*/) {}

    T* allocate(std::size_t count) { return std::allocator<T>{}.allocate(count); }

    void deallocate(T* memory, std::size_t count) {
        wipe(memory, count * sizeof(T));
        std::allocator<T>{}.deallocate(memory, count);
    }

    bool operator==(const WipingAllocator& /*other*/) const { return true; }
};

/// Bytes that nobody else may see.
using Secret = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

enum class DigestKind { sha1, sha224, sha256, sha384, sha512 };

Bytes digest(DigestKind kind, ByteView data);

/// What a channel to the chip is enciphered and authenticated with: triple DES with two keys and the retail MAC
/// (ISO 9797-1, algorithm 3), or AES and CMAC.
enum class Cipher { tripleDes, aes128, aes192, aes256 };

/// In bytes: 8 or 16.
std::size_t blockSize(Cipher cipher);
/// In bytes: 16, 24 or 32.
std::size_t keySize(Cipher cipher);

/// Enciphers or deciphers whole blocks in CBC mode. `iv` has the size of a block; empty, all its bytes are 0.
Secret encrypted(Cipher cipher, ByteView key, ByteView iv, ByteView blocks);
Secret decrypted(Cipher cipher, ByteView key, ByteView iv, ByteView blocks);

/// The first eight bytes of the message authentication code. The retail MAC pads the data, CMAC takes the data as
/// they are.
Bytes authenticationCode(Cipher cipher, ByteView key, ByteView data);

/// The data, a byte 0x80, and zeros up to a whole block (ISO 9797-1, padding method 2).
Secret padded(ByteView data, std::size_t block);

/// The data without such padding; an empty pointer where the padding is broken.
std::unique_ptr<Secret> unpadded(ByteView blocks);

/// The purposes for which a key is derived from a shared secret.
enum class KeyPurpose : std::uint8_t { encryption = 1, authentication = 2, password = 3 };

Secret derivedKey(ByteView secret, KeyPurpose purpose, Cipher cipher);

/// The keys of a channel, and the counter from which it goes on: one block.
struct ChannelKeys {
    Cipher cipher = Cipher::aes128;
    Secret encryption{};
    Secret authentication{};
    Bytes counter{};
};

/// The keys that a shared secret gives, with a counter of 0.
ChannelKeys channelKeys(ByteView secret, Cipher cipher);

/// Compares in a time that depends on the sizes only.
bool areEqual(ByteView one, ByteView other);

/// Fills the memory with random bytes.
using Randomness = std::function<void(std::span<std::uint8_t>)>;

/// The system's randomness.
void fillRandomly(std::span<std::uint8_t> memory);

} // namespace kivo::reader
