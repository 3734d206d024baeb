#include "Cryptography.hpp"

#include <openssl/rand.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace kivo::simulator {
namespace {

constexpr std::size_t nonceSize = 12;
constexpr std::size_t tagSize = 16;

// The key of every type goes behind the header of an RSA 2048-bit SubjectPublicKeyInfo.
constexpr std::string_view pinHeader{"\x30\x82\x01\x22\x30\x0d\x06\x09\x2a\x86\x48\x86"
                                     "\xf7\x0d\x01\x01\x01\x05\x00\x03\x82\x01\x0f\x00",
                                     24};

using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, Free<EVP_CIPHER_CTX_free>>;
using Digest = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

unsigned char* bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

Digest digestOf(std::string_view data) {
    Digest digest{};
    SHA256(bytes(data), data.size(), digest.data());
    return digest;
}

} // namespace

std::string seal(std::string_view keyText, std::string_view plain) {
    const auto key = digestOf(keyText);
    std::string nonce(nonceSize, '\0');
    std::string tag(tagSize, '\0');
    std::string cipher(plain.size(), '\0');
    const CipherContext context{EVP_CIPHER_CTX_new()};
    int length = 0;
    if (RAND_bytes(bytes(nonce), nonceSize) != 1 ||
        EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), bytes(nonce)) != 1 ||
        EVP_EncryptUpdate(context.get(), bytes(cipher), &length, bytes(plain), static_cast<int>(plain.size())) != 1 ||
        EVP_EncryptFinal_ex(context.get(), nullptr, &length) != 1 ||
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, tagSize, tag.data()) != 1) {
        throw std::runtime_error{"simulator: the document data could not be encrypted"};
    }
    return base64(nonce + tag + cipher);
}

std::optional<std::string> unseal(std::string_view keyText, std::string_view sealed) {
    auto all = bytesOfBase64(sealed);
    if (!all || all->size() < nonceSize + tagSize) {
        return std::nullopt;
    }
    const auto key = digestOf(keyText);
    const std::string_view cipher = std::string_view{*all}.substr(nonceSize + tagSize);
    std::string plain(cipher.size(), '\0');
    const CipherContext context{EVP_CIPHER_CTX_new()};
    int length = 0;
    const bool opened =
        EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.data(), bytes(*all)) == 1 &&
        EVP_DecryptUpdate(context.get(), bytes(plain), &length, bytes(cipher), static_cast<int>(cipher.size())) == 1 &&
        EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG, tagSize, all->data() + nonceSize) == 1 &&
        EVP_DecryptFinal_ex(context.get(), nullptr, &length) == 1;
    return opened ? std::optional{std::move(plain)} : std::nullopt;
}

std::string base64(std::string_view data) {
    std::string text((data.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(bytes(text), bytes(data), static_cast<int>(data.size()));
    text.pop_back();
    return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::string data(text.size() / 4 * 3, '\0');
    if (EVP_DecodeBlock(bytes(data), bytes(text), static_cast<int>(text.size())) < 0) {
        return std::nullopt;
    }
    const auto padding = text.ends_with("==") ? 2U : text.ends_with("=") ? 1U : 0U;
    data.resize(data.size() - padding);
    return data;
}

std::string publicKeyPin(const X509* certificate) {
    // The certificates made here carry their key in its external form: PKCS#1 for RSA, an uncompressed point on a
    // curve.
    const auto* const key = X509_get0_pubkey_bitstr(certificate);
    std::string pinned{pinHeader};
    pinned.append(reinterpret_cast<const char*>(ASN1_STRING_get0_data(key)),
                  static_cast<std::size_t>(ASN1_STRING_length(key)));
    const auto digest = digestOf(pinned);
    return base64({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

std::string publicKeyPin(std::string_view der) {
    const auto* begin = bytes(der);
    const Certificate certificate{d2i_X509(nullptr, &begin, static_cast<long>(der.size()))};
    return certificate ? publicKeyPin(certificate.get()) : std::string{};
}

} // namespace kivo::simulator
