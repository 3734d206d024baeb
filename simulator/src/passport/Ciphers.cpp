#include "passport/Ciphers.hpp"

#include "Cryptography.hpp"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <bit>
#include <ranges>
#include <stdexcept>

namespace kivo::simulator::chip {
namespace {

using Context = std::unique_ptr<EVP_CIPHER_CTX, Free<EVP_CIPHER_CTX_free>>;
using MacAlgorithm = std::unique_ptr<EVP_MAC, Free<EVP_MAC_free>>;
using MacContext = std::unique_ptr<EVP_MAC_CTX, Free<EVP_MAC_CTX_free>>;

constexpr std::size_t codeSize = 8;

const EVP_CIPHER* algorithm(ChipCipher cipher) {
    switch (cipher) {
    case ChipCipher::tripleDes:
        return EVP_des_ede_cbc();
    case ChipCipher::aes128:
        return EVP_aes_128_cbc();
    case ChipCipher::aes192:
        return EVP_aes_192_cbc();
    case ChipCipher::aes256:
        break;
    }
    return EVP_aes_256_cbc();
}

Bytes transformed(ChipCipher cipher, View key, View data, View initialVector, bool encrypts) {
    const std::array<std::uint8_t, 16> zeros{};
    const Context context{EVP_CIPHER_CTX_new()};
    Bytes result(data.size() + blockSize(cipher));
    int length = 0;
    if (key.size() != keySize(cipher) || data.size() % blockSize(cipher) != 0 ||
        EVP_CipherInit_ex2(context.get(), algorithm(cipher), key.data(),
                           initialVector.empty() ? zeros.data() : initialVector.data(), encrypts ? 1 : 0,
                           nullptr) != 1 ||
        EVP_CIPHER_CTX_set_padding(context.get(), 0) != 1 ||
        EVP_CipherUpdate(context.get(), result.data(), &length, data.data(), static_cast<int>(data.size())) != 1) {
        throw std::runtime_error{"simulator: a chip's cipher failed"};
    }
    result.resize(static_cast<std::size_t>(length));
    return result;
}

/// ISO 9797-1, algorithm 3: single DES with the first half of the key in a chain, both halves for the last block.
Bytes retailMac(View key, View data) {
    const auto blocks = padded(data, codeSize);
    const auto half = key.first(codeSize);
    const auto single = joined({half, half});
    const auto last = View{blocks}.last(codeSize);
    const auto chain = View{blocks}.first(blocks.size() - codeSize);
    Bytes state(codeSize);
    if (!chain.empty()) {
        state = encrypted(ChipCipher::tripleDes, single, chain);
        state.erase(state.begin(), state.end() - codeSize);
    }
    return encrypted(ChipCipher::tripleDes, key, last, state);
}

Bytes cmac(ChipCipher cipher, View key, View data) {
    const MacAlgorithm mac{EVP_MAC_fetch(nullptr, "CMAC", nullptr)};
    const MacContext context{EVP_MAC_CTX_new(mac.get())};
    std::string name = EVP_CIPHER_get0_name(algorithm(cipher));
    const std::array parameters{OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_CIPHER, name.data(), 0),
                                OSSL_PARAM_construct_end()};
    Bytes code(16);
    std::size_t length = 0;
    if (EVP_MAC_init(context.get(), key.data(), key.size(), parameters.data()) != 1 ||
        EVP_MAC_update(context.get(), data.data(), data.size()) != 1 ||
        EVP_MAC_final(context.get(), code.data(), &length, code.size()) != 1) {
        throw std::runtime_error{"simulator: a chip's authentication code failed"};
    }
    code.resize(codeSize);
    return code;
}

} // namespace

Bytes randomBytes(const Random& random, std::size_t count) {
    Bytes bytes(count);
    if (random) {
        random(bytes);
    } else if (RAND_bytes(bytes.data(), static_cast<int>(count)) != 1) {
        throw std::runtime_error{"simulator: no random numbers"};
    }
    return bytes;
}

const EVP_MD* hashFunction(HashFunction function) {
    switch (function) {
    case HashFunction::sha1:
        return EVP_sha1();
    case HashFunction::sha224:
        return EVP_sha224();
    case HashFunction::sha256:
        return EVP_sha256();
    case HashFunction::sha384:
        return EVP_sha384();
    case HashFunction::sha512:
        break;
    }
    return EVP_sha512();
}

Bytes digest(HashFunction function, View data) {
    Bytes result(EVP_MAX_MD_SIZE);
    unsigned length = 0;
    EVP_Digest(data.data(), data.size(), result.data(), &length, hashFunction(function), nullptr);
    result.resize(length);
    return result;
}

Bytes derivedKey(ChipCipher cipher, View secret, Purpose purpose) {
    const bool isLong = cipher == ChipCipher::aes192 || cipher == ChipCipher::aes256;
    auto key = digest(isLong ? HashFunction::sha256 : HashFunction::sha1,
                      joined({secret, bigEndian(static_cast<std::uint8_t>(purpose), 4)}));
    key.resize(keySize(cipher));
    if (cipher == ChipCipher::tripleDes) {
        for (auto& byte : key) {
            const auto bits = static_cast<std::uint8_t>(byte & 0xFEU);
            byte = static_cast<std::uint8_t>(bits | (std::popcount(bits) % 2 == 0 ? 1U : 0U));
        }
    }
    return key;
}

std::size_t blockSize(ChipCipher cipher) {
    return cipher == ChipCipher::tripleDes ? 8 : 16;
}

std::size_t keySize(ChipCipher cipher) {
    return cipher == ChipCipher::aes256 ? 32 : cipher == ChipCipher::aes192 ? 24 : 16;
}

Bytes encrypted(ChipCipher cipher, View key, View data, View initialVector) {
    return transformed(cipher, key, data, initialVector, true);
}

Bytes decrypted(ChipCipher cipher, View key, View data, View initialVector) {
    return transformed(cipher, key, data, initialVector, false);
}

Bytes padded(View data, std::size_t block) {
    auto result = copied(data);
    result.push_back(0x80);
    result.resize((result.size() + block - 1) / block * block);
    return result;
}

std::optional<Bytes> unpadded(View data) {
    const auto mark = std::ranges::find_if(data | std::views::reverse, [](std::uint8_t byte) { return byte != 0; });
    if (mark == data.rend() || *mark != 0x80) {
        return std::nullopt;
    }
    return Bytes(data.begin(), mark.base() - 1);
}

Bytes authenticationCode(ChipCipher cipher, View key, View data) {
    return cipher == ChipCipher::tripleDes ? retailMac(key, data) : cmac(cipher, key, data);
}

bool areEqual(View left, View right) {
    return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

} // namespace kivo::simulator::chip
