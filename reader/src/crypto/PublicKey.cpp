#include "crypto/PublicKey.hpp"

#include "crypto/CertificateObjects.hpp"
#include "tlv/ObjectIdentifier.hpp"
#include "tlv/Tlv.hpp"

#include <openssl/bn.h>
#include <openssl/ecdsa.h>

#include <algorithm>

namespace kivo::reader {
namespace {

using EcSignature = std::unique_ptr<ECDSA_SIG, x509::Free<ECDSA_SIG_free>>;
using NumberContext = std::unique_ptr<BN_CTX, x509::Free<BN_CTX_free>>;

x509::Number number(ByteView bytes) {
    return x509::Number{BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr)};
}

Bytes bytesOf(const BIGNUM* value, std::size_t size) {
    Bytes bytes(size);
    return BN_bn2binpad(value, bytes.data(), static_cast<int>(size)) < 0 ? Bytes{} : bytes;
}

Bytes withoutZeros(ByteView value) {
    while (!value.empty() && value[0] == 0) {
        value = value.subspan(1);
    }
    return {value.begin(), value.end()};
}

} // namespace

std::optional<PublicKey> PublicKey::read(ByteView der) {
    const x509::Errors errors;
    constexpr std::size_t largestKey = 4096;
    const auto info = firstTlv(der);
    const auto parts = info && info->tag == 0x30 && der.size() <= largestKey ? allTlv(info->value) : std::nullopt;
    if (!parts || parts->size() != 2 || (*parts)[0].tag != 0x30 || (*parts)[1].tag != 0x03 ||
        (*parts)[1].value.empty()) {
        return std::nullopt;
    }
    const auto algorithm = valueOf((*parts)[0].value, 0x06);
    PublicKey key;
    if (algorithm && dottedIdentifier(*algorithm) == "1.2.840.113549.1.1.1") {
        // Some chips leave the zero before the modulus out, which makes a negative number of the modulus. So the two
        // numbers are read as they stand.
        const auto numbers = valueOf((*parts)[1].value.subspan(1), 0x30);
        const auto both = numbers ? allTlv(*numbers) : std::nullopt;
        if (!both || both->size() != 2 || (*both)[0].tag != 0x02 || (*both)[1].tag != 0x02) {
            return std::nullopt;
        }
        key.modulus = withoutZeros((*both)[0].value);
        key.exponent = withoutZeros((*both)[1].value);
        constexpr std::size_t leastModulus = 128;
        constexpr std::size_t mostModulus = 1024;
        constexpr std::size_t mostExponent = 8;
        if (key.modulus.size() < leastModulus || key.modulus.size() > mostModulus || (key.modulus.back() & 1) == 0 ||
            key.exponent.empty() || key.exponent.size() > mostExponent) {
            return std::nullopt;
        }
        return key;
    }
    const auto* at = der.data();
    key.curveKey.reset(d2i_PUBKEY(nullptr, &at, static_cast<long>(der.size())), EVP_PKEY_free);
    if (!key.curveKey || EVP_PKEY_get_base_id(key.curveKey.get()) != EVP_PKEY_EC) {
        return std::nullopt;
    }
    return key;
}

bool PublicKey::isRsa() const {
    return !modulus.empty();
}

Bytes PublicKey::recovered(ByteView signature) const {
    const x509::Errors errors;
    const auto n = number(modulus);
    const auto e = number(exponent);
    const auto s = number(signature.first(std::min(signature.size(), modulus.size() + 1)));
    const NumberContext context{BN_CTX_new()};
    const x509::Number result{BN_new()};
    if (!n || !e || !s || !context || !result || signature.size() > modulus.size() || BN_cmp(s.get(), n.get()) >= 0 ||
        BN_mod_exp(result.get(), s.get(), e.get(), n.get(), context.get()) != 1) {
        return {};
    }
    return bytesOf(result.get(), modulus.size());
}

Bytes PublicKey::complement(ByteView recovered) const {
    const auto n = number(modulus);
    const auto value = number(recovered);
    return n && value && BN_sub(value.get(), n.get(), value.get()) == 1 ? bytesOf(value.get(), modulus.size())
                                                                        : Bytes{};
}

bool PublicKey::plainSignatureHolds(ByteView digest, ByteView signature) const {
    const x509::Errors errors;
    constexpr std::size_t largestSignature = 132; // two numbers of 521 bits
    if (!curveKey || signature.empty() || signature.size() % 2 != 0 || signature.size() > largestSignature) {
        return false;
    }
    const EcSignature pair{ECDSA_SIG_new()};
    auto r = number(signature.first(signature.size() / 2));
    auto s = number(signature.subspan(signature.size() / 2));
    if (!pair || !r || !s) {
        return false;
    }
    ECDSA_SIG_set0(pair.get(), r.release(), s.release()); // fails for null only
    Bytes der(largestSignature + 16);
    auto* end = der.data();
    const int size = i2d_ECDSA_SIG(pair.get(), &end);
    const std::unique_ptr<EVP_PKEY_CTX, x509::Free<EVP_PKEY_CTX_free>> context{
        EVP_PKEY_CTX_new(curveKey.get(), nullptr)};
    return size > 0 && context && EVP_PKEY_verify_init(context.get()) == 1 &&
           EVP_PKEY_verify(context.get(), der.data(), static_cast<std::size_t>(size), digest.data(), digest.size()) ==
               1;
}

} // namespace kivo::reader
