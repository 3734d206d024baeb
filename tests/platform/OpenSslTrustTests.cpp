#include "platform/openssl/OpenSslTrust.hpp"

#include "platform/openssl/OpenSslObjects.hpp"
#include "platform/openssl/SealedValue.hpp"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/err.h>
#include <openssl/x509.h>

#include <functional>
#include <memory>

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

TEST(OpenSslTrust, LeavesTheErrorsOfTheHostAndNoneOfItsOwn) {
    const KeyPointer key{EVP_EC_gen("P-256")};
    const KeyPointer edwards{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")};
    const auto trust = makeOpenSslTrust();
    const auto certificate = certificateOn(key.get());
    const auto stranger = certificateOn(edwards.get());
    const SealingKey sealingKey;
    const auto parsed = certificateIn(certificate);
    const std::unique_ptr<STACK_OF(X509), OpenSslFree<[](STACK_OF(X509) * all) { sk_X509_free(all); }>> presented{
        sk_X509_new_null()};
    const auto other = certificateIn(stranger);
    sk_X509_push(presented.get(), other.get());
    const std::function<void()> uses[] = {
        [&] { trust->externalPublicKey("no certificate"); },
        [&] { trust->externalPublicKey(stranger); },
        [&] { trust->validity(certificate, "host.example"); },
        [&] { trust->validity("no certificate", ""); },
        [&] { linkedChain(parsed.get(), presented.get()); },
        [&] { unseal(sealingKey, "identity", std::string(sealedSize(0), '\x01')); },
    };
    ERR_clear_error();
    for (const auto& use : uses) {
        ERR_raise(ERR_LIB_USER, 1);
        use();
        EXPECT_EQ(ERR_GET_LIB(ERR_get_error()), ERR_LIB_USER) << &use - uses;
        EXPECT_EQ(ERR_get_error(), 0UL) << &use - uses;
        ERR_clear_error();
    }
}

} // namespace
} // namespace kivo::platform
