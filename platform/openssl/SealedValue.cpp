#include "platform/openssl/SealedValue.hpp"

#include <kivo/platform/Keychain.hpp>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <sys/random.h>

#include <cstddef>
#include <limits>
#include <utility>

namespace kivo::platform {
namespace {

// A sealed value consists of this byte, the nonce, the text and the tag.
constexpr char formatVersion = 1;
constexpr std::size_t nonceLength = 12;
constexpr std::size_t tagLength = 16;
constexpr std::size_t overhead = 1 + nonceLength + tagLength;

unsigned char* bytes(char* text) {
    return reinterpret_cast<unsigned char*>(text);
}

const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

int length(std::string_view text) {
    return static_cast<int>(text.size());
}

bool fits(std::string_view text) {
    return text.size() <= std::numeric_limits<int>::max() - overhead;
}

} // namespace

SealingKey::~SealingKey() {
    OPENSSL_cleanse(bytes_.data(), bytes_.size());
}

EVP_CIPHER_CTX* SealingKey::cipher(Direction direction, const unsigned char* nonce) const {
    auto& cipher = ciphers_[direction == Direction::sealing ? 0 : 1];
    const int seals = direction == Direction::sealing ? 1 : 0;
    if (!cipher) {
        Cipher made{EVP_CIPHER_CTX_new()};
        if (EVP_CipherInit_ex(made.get(), EVP_aes_256_gcm(), nullptr, data(), nullptr, seals) != 1) {
            return nullptr;
        }
        cipher = std::move(made);
    }
    return EVP_CipherInit_ex(cipher.get(), nullptr, nullptr, nullptr, nonce, seals) == 1 ? cipher.get() : nullptr;
}

void wipe(std::string& secret) {
    // The rest of a longer former text, behind the end, is overwritten as well.
    secret.resize(secret.capacity());
    OPENSSL_cleanse(secret.data(), secret.size());
    secret.clear();
}

std::size_t sealedSize(std::size_t size) {
    return overhead + size;
}

std::optional<std::string> seal(const SealingKey& key, std::string_view identity, std::string_view value) {
    if (!fits(identity) || !fits(value)) {
        return std::nullopt;
    }
    std::string sealed(overhead + value.size(), formatVersion);
    auto* nonce = bytes(sealed.data() + 1);
    auto* text = nonce + nonceLength;
    auto* tag = text + value.size();
    int written = 0;
    // The system's own random bytes: a generator of the library's takes five times as long for twelve bytes.
    auto* const cipher =
        getrandom(nonce, nonceLength, 0) == nonceLength ? key.cipher(SealingKey::Direction::sealing, nonce) : nullptr;
    const bool done = cipher != nullptr &&
                      EVP_EncryptUpdate(cipher, nullptr, &written, bytes(identity), length(identity)) == 1 &&
                      EVP_EncryptUpdate(cipher, text, &written, bytes(value), length(value)) == 1 &&
                      EVP_EncryptFinal_ex(cipher, tag, &written) == 1 &&
                      EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_GET_TAG, tagLength, tag) == 1;
    return done ? std::optional{std::move(sealed)} : std::nullopt;
}

std::optional<std::string> unseal(const SealingKey& key, std::string_view identity, std::string_view sealed) {
    if (!fits(identity) || !fits(sealed) || sealed.size() < overhead || sealed.front() != formatVersion) {
        return std::nullopt;
    }
    std::optional<std::string> value{std::in_place, sealed.size() - overhead, '\0'};
    std::string tag{sealed.substr(sealed.size() - tagLength)};
    const auto* nonce = bytes(sealed.substr(1));
    const auto* text = nonce + nonceLength;
    int written = 0;
    auto* const cipher = key.cipher(SealingKey::Direction::opening, nonce);
    const bool done = cipher != nullptr &&
                      EVP_DecryptUpdate(cipher, nullptr, &written, bytes(identity), length(identity)) == 1 &&
                      EVP_DecryptUpdate(cipher, bytes(value->data()), &written, text, length(*value)) == 1 &&
                      EVP_CIPHER_CTX_ctrl(cipher, EVP_CTRL_GCM_SET_TAG, tagLength, tag.data()) == 1 &&
                      EVP_DecryptFinal_ex(cipher, bytes(tag.data()), &written) == 1;
    if (!done) {
        wipe(*value);
        value.reset();
    }
    return value;
}

} // namespace kivo::platform
