#include "platform/openssl/OpenSslTrust.hpp"

#include "platform/openssl/OpenSslObjects.hpp"

#include <kivo/simulator/CertificateAuthority.hpp>

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/pem.h>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using simulator::CertificateAuthority;
using simulator::KeyType;

std::string certificateOn(EVP_PKEY* key, const char* lastSecond = "20300101000000Z") {
    const X509Pointer certificate{X509_new()};
    X509_set_pubkey(certificate.get(), key);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    ASN1_TIME_set_string(X509_getm_notAfter(certificate.get()), lastSecond);
    X509_sign(certificate.get(), key, EVP_PKEY_is_a(key, "ED25519") == 1 ? nullptr : EVP_sha256());
    return derOf(certificate.get(), i2d_X509);
}

TEST(OpenSslTrust, ExportsRsaKeysAsPkcs1AndCurveKeysAsUncompressedPoints) {
    const KeyPointer rsa{EVP_RSA_gen(2048)};
    const KeyPointer point{EVP_EC_gen("P-384")};
    const KeyPointer compressed{EVP_EC_gen("P-256")};
    EVP_PKEY_set_utf8_string_param(compressed.get(), OSSL_PKEY_PARAM_EC_POINT_CONVERSION_FORMAT, "compressed");
    const KeyPointer edwards{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")};
    const auto trust = makeOpenSslTrust();
    const auto keyOf = [&](const KeyPointer& key) { return trust->externalPublicKey(certificateOn(key.get())); };

    // The bit string of a SubjectPublicKeyInfo holds the key itself.
    const auto info = derOf(rsa.get(), i2d_PUBKEY);
    EXPECT_EQ(keyOf(rsa), info.substr(24));
    ASSERT_EQ(keyOf(point).value_or("").size(), 97U);
    EXPECT_EQ(keyOf(point)->front(), '\x04');
    ASSERT_EQ(keyOf(compressed).value_or("").size(), 65U);
    EXPECT_EQ(keyOf(compressed)->front(), '\x04');
    EXPECT_EQ(keyOf(edwards), std::nullopt);
    EXPECT_EQ(trust->externalPublicKey("no certificate"), std::nullopt);
    EXPECT_EQ(trust->externalPublicKey(""), std::nullopt);
}

TEST(OpenSslTrust, DigestsAndEncodes) {
    const auto trust = makeOpenSslTrust();
    EXPECT_EQ(trust->base64(trust->sha256("abc")), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
    EXPECT_EQ(trust->base64(""), "");
    EXPECT_EQ(trust->base64(std::string_view{"\0", 1}), "AA==");
}

TEST(OpenSslTrust, KnowsForWhomAndHowLongACertificateIs) {
    const auto trust = makeOpenSslTrust();
    const auto pem = CertificateAuthority{}.issue({.names = {"a.example", "*.b.example", "127.0.0.1"}}).chain;
    const std::unique_ptr<BIO, OpenSslFree<BIO_free>> memory{BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()))};
    const X509Pointer certificate{PEM_read_bio_X509(memory.get(), nullptr, nullptr, nullptr)};
    const auto der = derOf(certificate.get(), i2d_X509);
    const std::pair<const char*, bool> hosts[] = {{"a.example", true},      {"A.EXAMPLE", true}, {"x.b.example", true},
                                                  {"b.example", false},     {"127.0.0.1", true}, {"127.0.0.2", false},
                                                  {"x.y.b.example", false}, {"", false}};
    for (const auto& [host, isNamed] : hosts) {
        EXPECT_EQ(trust->validity(der, host)->namesHost, isNamed) << host;
    }
    const auto validity = trust->validity(der, "a.example");
    EXPECT_EQ(validity->notAfter - validity->notBefore, 24h * 91);
    const KeyPointer key{EVP_EC_gen("P-256")};
    constexpr std::chrono::sys_days lastDay = 9999y / 12 / 31;
    EXPECT_EQ(trust->validity(certificateOn(key.get(), "99991231235959Z"), "")->notAfter, lastDay + 24h - 1s);
    EXPECT_FALSE(trust->validity("no certificate", "a.example"));
}

} // namespace
} // namespace kivo::platform
