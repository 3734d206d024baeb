#include "crypto/Cryptography.hpp"

#include "crypto/OpenSslObjects.hpp"

#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <bit>
#include <stdexcept>

namespace kivo::reader {
namespace {

constexpr std::size_t authenticationCodeSize = 8;
constexpr std::size_t desBlock = 8;

const EVP_MD* implementationOf(DigestKind kind) {
    switch (kind) {
    case DigestKind::sha1:
        return EVP_sha1();
    case DigestKind::sha224:
        return EVP_sha224();
    case DigestKind::sha256:
        return EVP_sha256();
    case DigestKind::sha384:
        return EVP_sha384();
    case DigestKind::sha512:
        return EVP_sha512();
    }
    return nullptr;
}

const EVP_CIPHER* implementationOf(Cipher cipher) {
    switch (cipher) {
    case Cipher::tripleDes:
        return EVP_des_ede_cbc();
    case Cipher::aes128:
        return EVP_aes_128_cbc();
    case Cipher::aes192:
        return EVP_aes_192_cbc();
    case Cipher::aes256:
        return EVP_aes_256_cbc();
    }
    return nullptr;
}

const char* nameForCmac(Cipher cipher) {
    return cipher == Cipher::aes128 ? "AES-128-CBC" : cipher == Cipher::aes192 ? "AES-192-CBC" : "AES-256-CBC";
}

enum class Direction { decrypt = 0, encrypt = 1 };

Secret transformed(Cipher cipher, Direction direction, ByteView key, ByteView iv, ByteView blocks) {
    const std::array<std::uint8_t, 16> zeros{};
    require(key.size() == keySize(cipher) && (iv.empty() || iv.size() == blockSize(cipher)) &&
            blocks.size() % blockSize(cipher) == 0);
    Secret output(blocks.size());
    const CipherContext context{EVP_CIPHER_CTX_new()};
    int written = 0;
    require(context != nullptr &&
            EVP_CipherInit_ex(context.get(), implementationOf(cipher), nullptr, key.data(),
                              iv.empty() ? zeros.data() : iv.data(), static_cast<int>(direction)) == 1 &&
            EVP_CIPHER_CTX_set_padding(context.get(), 0) == 1 &&
            EVP_CipherUpdate(context.get(), output.data(), &written, blocks.data(), static_cast<int>(blocks.size())) ==
                1 &&
            static_cast<std::size_t>(written) == blocks.size());
    return output;
}

// Single DES of all blocks but the last, and triple DES of the last. Triple DES with the same key thrice is single DES.
Bytes retailMac(ByteView key, ByteView data) {
    require(key.size() == keySize(Cipher::tripleDes));
    const auto blocks = padded(data, desBlock);
    const auto first = key.first(desBlock);
    Secret single{first.begin(), first.end()};
    single.insert(single.end(), first.begin(), first.end());
    const auto chained = encrypted(Cipher::tripleDes, single, {}, ByteView{blocks}.first(blocks.size() - desBlock));
    const auto last = encrypted(Cipher::tripleDes, key, chained.empty() ? ByteView{} : ByteView{chained}.last(desBlock),
                                ByteView{blocks}.last(desBlock));
    return {last.begin(), last.end()};
}

} // namespace

void require(bool succeeded) {
    if (!succeeded) {
        throw std::runtime_error{"OpenSSL failed"};
    }
}

void prepareCryptography() {
    OPENSSL_init_crypto(0, nullptr);
}

void endCryptographyOfThread() {
    OPENSSL_thread_stop();
}

void wipe(void* memory, std::size_t size) {
    OPENSSL_cleanse(memory, size);
}

Bytes digest(DigestKind kind, ByteView data) {
    Bytes value(EVP_MAX_MD_SIZE);
    unsigned size = 0;
    require(EVP_Digest(data.data(), data.size(), value.data(), &size, implementationOf(kind), nullptr) == 1);
    value.resize(size);
    return value;
}

std::size_t blockSize(Cipher cipher) {
    return cipher == Cipher::tripleDes ? desBlock : 16;
}

std::size_t keySize(Cipher cipher) {
    return cipher == Cipher::aes256 ? 32 : cipher == Cipher::aes192 ? 24 : 16;
}

Secret encrypted(Cipher cipher, ByteView key, ByteView iv, ByteView blocks) {
    return transformed(cipher, Direction::encrypt, key, iv, blocks);
}

Secret decrypted(Cipher cipher, ByteView key, ByteView iv, ByteView blocks) {
    return transformed(cipher, Direction::decrypt, key, iv, blocks);
}

Bytes authenticationCode(Cipher cipher, ByteView key, ByteView data) {
    if (cipher == Cipher::tripleDes) {
        return retailMac(key, data);
    }
    Bytes code(blockSize(cipher));
    std::size_t size = 0;
    require(key.size() == keySize(cipher) &&
            EVP_Q_mac(nullptr, "CMAC", nullptr, nameForCmac(cipher), nullptr, key.data(), key.size(), data.data(),
                      data.size(), code.data(), code.size(), &size) != nullptr);
    code.resize(authenticationCodeSize);
    return code;
}

Secret padded(ByteView data, std::size_t block) {
    Secret blocks{data.begin(), data.end()};
    blocks.reserve((data.size() / block + 1) * block);
    blocks.push_back(0x80);
    blocks.resize((data.size() / block + 1) * block);
    return blocks;
}

std::unique_ptr<Secret> unpadded(ByteView blocks) {
    const auto mark = std::ranges::find_if(blocks.rbegin(), blocks.rend(), [](auto byte) { return byte != 0; });
    if (mark == blocks.rend() || *mark != 0x80) {
        return nullptr;
    }
    return std::make_unique<Secret>(blocks.begin(), mark.base() - 1);
}

Secret derivedKey(ByteView secret, KeyPurpose purpose, Cipher cipher) {
    const auto kind = keySize(cipher) > 16 ? DigestKind::sha256 : DigestKind::sha1;
    Secret input{secret.begin(), secret.end()};
    input.insert(input.end(), {0, 0, 0, static_cast<std::uint8_t>(purpose)});
    auto value = digest(kind, input);
    Secret key{value.begin(), value.begin() + static_cast<std::ptrdiff_t>(keySize(cipher))};
    wipe(value.data(), value.size());
    if (cipher == Cipher::tripleDes) {
        for (auto& byte : key) { // The lowest bit of each byte makes the number of set bits odd.
            const bool isEven = std::popcount(static_cast<unsigned>(byte >> 1)) % 2 == 0;
            byte = static_cast<std::uint8_t>((byte & 0xFE) | (isEven ? 1 : 0));
        }
    }
    return key;
}

ChannelKeys channelKeys(ByteView secret, Cipher cipher) {
    return {.cipher = cipher,
            .encryption = derivedKey(secret, KeyPurpose::encryption, cipher),
            .authentication = derivedKey(secret, KeyPurpose::authentication, cipher),
            .counter = Bytes(blockSize(cipher))};
}

bool areEqual(ByteView one, ByteView other) {
    return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

void fillRandomly(std::span<std::uint8_t> memory) {
    require(RAND_priv_bytes(memory.data(), static_cast<int>(memory.size())) == 1);
}

} // namespace kivo::reader
