#include "SealedData.hpp"

#include "OpenSslObjects.hpp"

#include <openssl/rand.h>
#include <openssl/sha.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace kivo::simulator {
namespace {

constexpr std::size_t nonceSize = 12;
constexpr std::size_t tagSize = 16;

using KeyBytes = std::array<unsigned char, SHA256_DIGEST_LENGTH>;

unsigned char* bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

KeyBytes keyFrom(std::string_view keyText) {
    KeyBytes key{};
    SHA256(bytes(keyText), keyText.size(), key.data());
    return key;
}

} // namespace

std::string seal(std::string_view keyText, std::string_view plain) {
    const auto key = keyFrom(keyText);
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
    const auto key = keyFrom(keyText);
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

} // namespace kivo::simulator
