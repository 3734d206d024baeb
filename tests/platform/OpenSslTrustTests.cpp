#include "platform/openssl/OpenSslTrust.hpp"

#include "platform/openssl/OpenSslObjects.hpp"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/x509.h>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;

std::string certificateOn(EVP_PKEY* key, const char* lastSecond = "20300101000000Z") {
    const X509Pointer certificate{X509_new()};
    X509_set_pubkey(certificate.get(), key);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    ASN1_TIME_set_string(X509_getm_notAfter(certificate.get()), lastSecond);
    X509_sign(certificate.get(), key, EVP_PKEY_is_a(key, "ED25519") == 1 ? nullptr : EVP_sha256());
    return derOf(certificate.get(), i2d_X509);
}

TEST(OpenSslTrust, ExportsCompressedPointsUncompressedAndNoKeyOfAnotherKind) {
    const KeyPointer compressed{EVP_EC_gen("P-384")};
    EVP_PKEY_set_utf8_string_param(compressed.get(), OSSL_PKEY_PARAM_EC_POINT_CONVERSION_FORMAT, "compressed");
    const KeyPointer edwards{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")};
    const auto trust = makeOpenSslTrust();
    const auto key = trust->externalPublicKey(certificateOn(compressed.get())).value_or("");
    EXPECT_EQ(key.size(), 97U);
    EXPECT_TRUE(key.starts_with('\x04'));
    EXPECT_EQ(trust->externalPublicKey(certificateOn(edwards.get())), std::nullopt);
}

TEST(OpenSslTrust, KnowsTheFirstAndTheLastMomentOfACertificate) {
    const KeyPointer key{EVP_EC_gen("P-256")};
    constexpr std::chrono::sys_days lastDay = 9999y / 12 / 31;
    const auto validity = makeOpenSslTrust()->validity(certificateOn(key.get(), "99991231235959Z"), "");
    EXPECT_EQ(validity->notAfter, lastDay + 24h - 1s);
    EXPECT_LT(std::chrono::abs(std::chrono::system_clock::now() - validity->notBefore), 1min);
}

} // namespace
} // namespace kivo::platform
