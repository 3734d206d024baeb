#include "passport/ChipKeys.hpp"

#include "passport/Numbers.hpp"

#include <openssl/core_names.h>
#include <openssl/ecdsa.h>
#include <openssl/rsa.h>

#include <stdexcept>
#include <utility>

namespace kivo::simulator::chip {
namespace {

using SigningContext = std::unique_ptr<EVP_PKEY_CTX, Free<EVP_PKEY_CTX_free>>;
using PointSignature = std::unique_ptr<ECDSA_SIG, Free<ECDSA_SIG_free>>;

constexpr std::size_t activeChallengeSize = 8;
constexpr int activeCurve = 12; // P-256
constexpr std::size_t coordinateSize = 32;

/// The last bytes of a signature of ISO 9796-2, which name the digest.
Bytes digestMark(HashFunction hash) {
    switch (hash) {
    case HashFunction::sha1:
        return {0xBC};
    case HashFunction::sha224:
        return {0x38, 0xCC};
    case HashFunction::sha256:
        return {0x34, 0xCC};
    case HashFunction::sha384:
        return {0x36, 0xCC};
    case HashFunction::sha512:
        break;
    }
    return {0x35, 0xCC};
}

Bytes signature(EVP_PKEY* key, bool isRsa, View data) {
    const SigningContext context{EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr)};
    Bytes result(static_cast<std::size_t>(EVP_PKEY_get_size(key)));
    auto length = result.size();
    if (EVP_PKEY_sign_init(context.get()) != 1 ||
        (isRsa && EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_NO_PADDING) != 1) ||
        EVP_PKEY_sign(context.get(), result.data(), &length, data.data(), data.size()) != 1) {
        throw std::runtime_error{"simulator: a chip's signature failed"};
    }
    result.resize(length);
    return result;
}

/// The two numbers of a signature on a curve, one after the other.
Bytes plainSignature(View der) {
    const auto* begin = der.data();
    const PointSignature numbers{d2i_ECDSA_SIG(nullptr, &begin, static_cast<long>(der.size()))};
    Bytes result(2 * coordinateSize);
    BN_bn2binpad(ECDSA_SIG_get0_r(numbers.get()), result.data(), coordinateSize);
    BN_bn2binpad(ECDSA_SIG_get0_s(numbers.get()), result.data() + coordinateSize, coordinateSize);
    return result;
}

} // namespace

ActiveKey::ActiveKey(ActiveAuthentication kind, HashFunction hash, int bits)
    : isRsa_{kind == ActiveAuthentication::rsa}
    , hash_{hash}
    , key_{isRsa_ ? EVP_RSA_gen(static_cast<unsigned>(bits)) : EVP_EC_gen("P-256")} {
    if (!key_) {
        throw std::runtime_error{"simulator: cannot make a chip's key"};
    }
}

Bytes ActiveKey::publicKeyInfo() const {
    if (isRsa_) {
        unsigned char* der = nullptr;
        const int length = i2d_PUBKEY(key_.get(), &der);
        const std::unique_ptr<unsigned char, Free<freeMemory>> owned{der};
        return {der, der + length};
    }
    Bytes point(1 + 2 * coordinateSize);
    std::size_t length = 0;
    EVP_PKEY_get_octet_string_param(key_.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size(), &length);
    return KeyAgreement::make(activeCurve)->publicKeyInfo(point);
}

Answer ActiveKey::answer(View challenge, const Random& random) const {
    if (challenge.size() != activeChallengeSize) {
        return Status::wrongLength;
    }
    if (isRsa_) {
        const auto size = static_cast<std::size_t>(EVP_PKEY_get_size(key_.get()));
        return signature(key_.get(), true, recoverable(challenge, random, size));
    }
    return plainSignature(signature(key_.get(), false, digest(hash_, challenge)));
}

/// ISO 9796-2, scheme 1: bytes of chance that the reader recovers, and the digest over them and the challenge.
Bytes ActiveKey::recoverable(View challenge, const Random& random, std::size_t size) const {
    const auto end = digestMark(hash_);
    const auto digestSize = static_cast<std::size_t>(EVP_MD_get_size(hashFunction(hash_)));
    const auto chance = randomBytes(random, size - 1 - digestSize - end.size());
    return joined({Bytes{0x6A}, chance, digest(hash_, joined({chance, challenge})), end});
}

AgreementKey::AgreementKey(ChipAuthenticationOffer offer, const Random& random)
    : offer_{offer}
    , agreement_{KeyAgreement::make(offer.domainParameters)} {
    if (!agreement_) {
        throw std::runtime_error{"simulator: there are no domain parameters " + std::to_string(offer.domainParameters)};
    }
    secret_ = agreement_->newSecret(random);
}

Bytes AgreementKey::publicKey() const {
    return agreement_->multiple(agreement_->generator(), secret_).value();
}

Bytes AgreementKey::publicKeyInfo() const {
    return agreement_->publicKeyInfo(publicKey());
}

Bytes AgreementKey::identifier() const {
    // 0.4.0.127.0.7.2.2.3, then kind of agreement and cipher.
    return {0x04,
            0x00,
            0x7F,
            0x00,
            0x07,
            0x02,
            0x02,
            0x03,
            static_cast<std::uint8_t>(agreement_->isCurve() ? 2 : 1),
            static_cast<std::uint8_t>(std::to_underlying(offer_.cipher) + 1)};
}

std::optional<Bytes> AgreementKey::sharedWith(View theirKey) const {
    const auto element = agreement_->multiple(theirKey, secret_);
    return element ? std::optional{agreement_->secretIn(*element)} : std::nullopt;
}

} // namespace kivo::simulator::chip
