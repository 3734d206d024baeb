#include "crypto/KeyAgreement.hpp"

#include "crypto/Groups.hpp"
#include "tlv/Tlv.hpp"

#include <openssl/core_names.h>
#include <openssl/param_build.h>
#include <openssl/x509.h>

#include <array>
#include <string>

namespace kivo::reader {
namespace {

constexpr std::size_t longestKeyInfo = 4096;
constexpr int mostDraws = 256;

BigNumber parameterOf(const EVP_PKEY* key, const char* name) {
    BIGNUM* number = nullptr;
    EVP_PKEY_get_bn_param(key, name, &number);
    return BigNumber{number};
}

KeyAgreement::Pointer modularGroupOf(const EVP_PKEY* key) {
    auto prime = parameterOf(key, OSSL_PKEY_PARAM_FFC_P);
    auto generator = parameterOf(key, OSSL_PKEY_PARAM_FFC_G);
    return prime && generator
               ? modularGroup(std::move(prime), std::move(generator), parameterOf(key, OSSL_PKEY_PARAM_FFC_Q))
               : nullptr;
}

// A group of RFC 5114, by the name that OpenSSL gives it.
KeyAgreement::Pointer modularGroup(const char* name) {
    const KeyContext context{EVP_PKEY_CTX_new_from_name(nullptr, "DHX", nullptr)};
    std::string value{name};
    const std::array parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_PKEY_PARAM_GROUP_NAME, value.data(), value.size()),
        OSSL_PARAM_construct_end()};
    EVP_PKEY* key = nullptr;
    auto copy = parameters;
    require(context && EVP_PKEY_fromdata_init(context.get()) == 1 &&
            EVP_PKEY_fromdata(context.get(), &key, OSSL_KEYMGMT_SELECT_ALL_PARAMETERS, copy.data()) == 1);
    return modularGroupOf(KeyObject{key}.get());
}

// A key whose algorithm is id-standardizedDomainParameters of BSI TR-03110, and whose parameter is a number.
std::optional<StaticKey> keyWithStandardisedParameter(ByteView subjectPublicKeyInfo) {
    constexpr std::array<std::uint8_t, 7> standardisedDomainParameters{0x04, 0x00, 0x7F, 0x00, 0x07, 0x01, 0x02};
    const auto info = valueOf(subjectPublicKeyInfo, 0x30);
    const auto algorithm = info ? valueOf(*info, 0x30) : std::nullopt;
    const auto bits = info ? valueOf(*info, 0x03) : std::nullopt;
    const auto object = algorithm ? valueOf(*algorithm, 0x06) : std::nullopt;
    const auto parameter = algorithm ? valueOf(*algorithm, 0x02) : std::nullopt;
    if (!object || !areEqual(*object, standardisedDomainParameters) || !parameter || parameter->size() != 1 || !bits ||
        bits->size() < 2 || (*bits)[0] != 0) {
        return std::nullopt;
    }
    auto group = KeyAgreement::standardised((*parameter)[0]);
    if (!group) {
        return std::nullopt;
    }
    auto key = bits->subspan(1);
    if (!group->isElliptic()) {
        const auto number = valueOf(key, 0x02);
        if (!number) {
            return std::nullopt;
        }
        key = *number;
        if (key.size() > 1 && key[0] == 0) {
            key = key.subspan(1);
        }
    }
    return StaticKey{.group = std::move(group), .publicKey = {key.begin(), key.end()}};
}

std::optional<StaticKey> ellipticKey(const EVP_PKEY* key) {
    std::array<char, 80> name{};
    std::size_t size = 0;
    if (EVP_PKEY_get_utf8_string_param(key, OSSL_PKEY_PARAM_GROUP_NAME, name.data(), name.size(), &size) != 1) {
        return std::nullopt;
    }
    auto group = ellipticGroup(name.data());
    const auto x = parameterOf(key, OSSL_PKEY_PARAM_EC_PUB_X);
    const auto y = parameterOf(key, OSSL_PKEY_PARAM_EC_PUB_Y);
    if (!group || !x || !y) {
        return std::nullopt;
    }
    const auto coordinate = (group->primeBits() + 7) / 8;
    Bytes point{POINT_CONVERSION_UNCOMPRESSED};
    for (const auto* const number : {x.get(), y.get()}) {
        const auto bytes = bytesOf(number, coordinate);
        point.insert(point.end(), bytes.begin(), bytes.end());
    }
    return StaticKey{.group = std::move(group), .publicKey = std::move(point)};
}

std::optional<StaticKey> modularKey(const EVP_PKEY* key) {
    auto group = modularGroupOf(key);
    const auto number = parameterOf(key, OSSL_PKEY_PARAM_PUB_KEY);
    if (!group || !number) {
        return std::nullopt;
    }
    const auto size = (group->primeBits() + 7) / 8;
    if (static_cast<std::size_t>(BN_num_bytes(number.get())) > size) {
        return std::nullopt;
    }
    const auto bytes = bytesOf(number.get(), size);
    return StaticKey{.group = std::move(group), .publicKey = {bytes.begin(), bytes.end()}};
}

} // namespace

KeyAgreement::Pointer KeyAgreement::standardised(int parameter) {
    switch (parameter) {
    case 0:
        return modularGroup("dh_1024_160");
    case 1:
        return modularGroup("dh_2048_224");
    case 2:
        return modularGroup("dh_2048_256");
    case 8:
        return ellipticGroup("prime192v1");
    case 9:
        return ellipticGroup("brainpoolP192r1");
    case 10:
        return ellipticGroup("secp224r1");
    case 11:
        return ellipticGroup("brainpoolP224r1");
    case 12:
        return ellipticGroup("prime256v1");
    case 13:
        return ellipticGroup("brainpoolP256r1");
    case 14:
        return ellipticGroup("brainpoolP320r1");
    case 15:
        return ellipticGroup("secp384r1");
    case 16:
        return ellipticGroup("brainpoolP384r1");
    case 17:
        return ellipticGroup("brainpoolP512r1");
    case 18:
        return ellipticGroup("secp521r1");
    default:
        return nullptr;
    }
}

std::optional<StaticKey> staticKeyIn(ByteView subjectPublicKeyInfo) {
    if (subjectPublicKeyInfo.size() > longestKeyInfo) {
        return std::nullopt;
    }
    if (auto key = keyWithStandardisedParameter(subjectPublicKeyInfo)) {
        return key;
    }
    const auto* begin = subjectPublicKeyInfo.data();
    const KeyObject key{d2i_PUBKEY(nullptr, &begin, static_cast<long>(subjectPublicKeyInfo.size()))};
    if (!key) {
        return std::nullopt;
    }
    if (EVP_PKEY_is_a(key.get(), "EC") == 1) {
        return ellipticKey(key.get());
    }
    const bool isModular = EVP_PKEY_is_a(key.get(), "DH") == 1 || EVP_PKEY_is_a(key.get(), "DHX") == 1;
    return isModular ? modularKey(key.get()) : std::nullopt;
}

Arithmetic arithmetic() {
    Arithmetic context{BN_CTX_new()};
    require(context != nullptr);
    return context;
}

BigNumber numberOf(ByteView bytes) {
    BigNumber number{BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), nullptr)};
    require(number != nullptr);
    BN_set_flags(number.get(), BN_FLG_CONSTTIME);
    return number;
}

Secret bytesOf(const BIGNUM* number, std::size_t size) {
    Secret bytes(size);
    require(BN_bn2binpad(number, bytes.data(), static_cast<int>(size)) >= 0);
    return bytes;
}

BigNumber randomNumberBelow(const BIGNUM* bound, const Randomness& randomness) {
    Secret bytes(static_cast<std::size_t>(BN_num_bytes(bound)));
    const int bitsOfFirst = BN_num_bits(bound) % 8;
    for (int i = 0; i < mostDraws; ++i) {
        randomness(bytes);
        if (bitsOfFirst != 0) {
            bytes[0] &= static_cast<std::uint8_t>((1U << static_cast<unsigned>(bitsOfFirst)) - 1);
        }
        auto number = numberOf(bytes);
        if (BN_is_zero(number.get()) == 0 && BN_cmp(number.get(), bound) < 0) {
            return number;
        }
    }
    require(false); // A source that fails so often is no source of randomness.
    return nullptr;
}

} // namespace kivo::reader
