#include "PublicKeyPin.hpp"

#include <openssl/evp.h>
#include <openssl/sha.h>

#include <array>
#include <memory>
#include <string_view>

namespace kivo::simulator {
namespace {

// The key of every type goes behind the header of an RSA 2048-bit SubjectPublicKeyInfo.
constexpr std::string_view header{"\x30\x82\x01\x22\x30\x0d\x06\x09\x2a\x86\x48\x86"
                                  "\xf7\x0d\x01\x01\x01\x05\x00\x03\x82\x01\x0f\x00",
                                  24};

} // namespace

std::string publicKeyPin(const X509* certificate) {
    // The certificates made here carry their key in its external form: PKCS#1 for RSA, an uncompressed point on a
    // curve.
    const auto* const key = X509_get0_pubkey_bitstr(certificate);
    std::string bytes{header};
    bytes.append(reinterpret_cast<const char*>(ASN1_STRING_get0_data(key)),
                 static_cast<std::size_t>(ASN1_STRING_length(key)));
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    std::string text((digest.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), digest.data(), static_cast<int>(digest.size()));
    text.pop_back();
    return text;
}

std::string publicKeyPin(std::string_view certificate) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(certificate.data());
    const std::unique_ptr<X509, decltype(&X509_free)> read{
        d2i_X509(nullptr, &bytes, static_cast<long>(certificate.size())), &X509_free};
    return read ? publicKeyPin(read.get()) : std::string{};
}

} // namespace kivo::simulator
