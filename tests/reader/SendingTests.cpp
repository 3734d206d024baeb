#include "crypto/Envelope.hpp"
#include "sending/DocumentProxy.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/simulator/CertificateAuthority.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <openssl/cms.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

namespace kivo::reader {
namespace {

using platform::UrlErrorKind;
using platform::readid::FailureReason;
using platform::readid::NFCWithAccessControlFlow;

std::string base64Of(std::string_view bytes) {
    return platform::services().trust->base64(bytes);
}

std::string textOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

/// A key pair with a certificate, as a service has them.
struct Recipient {
    explicit Recipient(EVP_PKEY* made, const EVP_MD* digest = EVP_sha256())
        : key{made, EVP_PKEY_free}
        , certificate{X509_new(), X509_free} {
        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
        X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
        ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 7);
        X509_set_pubkey(certificate.get(), key.get());
        X509_sign(certificate.get(), key.get(), digest);
    }

    std::string text() const {
        unsigned char* der = nullptr;
        const int size = i2d_X509(certificate.get(), &der);
        const std::string bytes{reinterpret_cast<char*>(der), static_cast<std::size_t>(size)};
        OPENSSL_free(der);
        return base64Of(bytes);
    }

    std::shared_ptr<EVP_PKEY> key;
    std::shared_ptr<X509> certificate;
};

/// What the recipient of a sealed message reads; absent where the message does not open.
std::optional<std::string> opened(ByteView der, const std::function<bool(CMS_ContentInfo*)>& setKey) {
    const auto* begin = der.data();
    const std::shared_ptr<CMS_ContentInfo> message{d2i_CMS_ContentInfo(nullptr, &begin, static_cast<long>(der.size())),
                                                   CMS_ContentInfo_free};
    const std::shared_ptr<BIO> out{BIO_new(BIO_s_mem()), BIO_free};
    if (!message || !setKey(message.get()) ||
        CMS_decrypt(message.get(), nullptr, nullptr, nullptr, out.get(), CMS_BINARY) != 1) {
        return std::nullopt;
    }
    char* text = nullptr;
    const auto size = BIO_get_mem_data(out.get(), &text);
    return std::string{text, static_cast<std::size_t>(size)};
}

TEST(Envelope, OpensForEachRecipientAndForNobodyElse) {
    const std::string shared(32, 'k');
    const Recipient rsa{EVP_RSA_gen(2048)};
    const Recipient curve{EVP_EC_gen("P-256")};
    std::vector<EnvelopeKey> keys;
    for (const auto& text : {base64Of(shared), rsa.text(), curve.text()}) {
        const auto key = EnvelopeKey::parsed(text);
        ASSERT_TRUE(key);
        keys.push_back(*key);
    }
    auto sealed = sealedMessage(bytesOf("P<UTOERIKSSON"), keys);
    ASSERT_TRUE(sealed);
    EXPECT_THAT(textOf(*sealed), testing::Not(testing::HasSubstr("ERIKSSON")));
    const auto withShared = [](std::string key) {
        return [key = std::move(key)](CMS_ContentInfo* message) mutable {
            return CMS_decrypt_set1_key(message, reinterpret_cast<unsigned char*>(key.data()), key.size(), nullptr,
                                        0) == 1;
        };
    };
    const auto withKeyOf = [](const Recipient& recipient) {
        return [&](CMS_ContentInfo* message) {
            return CMS_decrypt_set1_pkey(message, recipient.key.get(), recipient.certificate.get()) == 1;
        };
    };
    EXPECT_EQ(opened(*sealed, withShared(shared)), "P<UTOERIKSSON");
    EXPECT_EQ(opened(*sealed, withKeyOf(rsa)), "P<UTOERIKSSON");
    EXPECT_EQ(opened(*sealed, withKeyOf(curve)), "P<UTOERIKSSON");
    EXPECT_FALSE(opened(*sealed, withShared(std::string(32, 'o'))));
    sealed->back() ^= 1U;
    EXPECT_FALSE(opened(*sealed, withShared(shared)));
}

TEST(Envelope, RefusesWhatIsNoKey) {
    const Recipient signsOnly{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), nullptr};
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 1);
    for (const auto& text : {std::string{}, std::string{"simulated-encrypt-key"}, std::string{"AAA"},
                             base64Of(std::string(31, 'k')), base64Of(std::string(33, '0')), std::string(65536, 'A')}) {
        EXPECT_FALSE(EnvelopeKey::parsed(text)) << text.substr(0, 40);
    }
    EXPECT_FALSE(sealedMessage(bytesOf("x"), {}));
    NFCWithAccessControlFlow flow;
    flow.baseUrl = "https://proxy.example";
    EXPECT_EQ(sendingFault(flow), "");
    const Recipient encrypts{EVP_RSA_gen(2048)};
    flow.applicationLevelEncryptionPins = {base64Of(std::string(32, 'k')), encrypts.text()};
    EXPECT_EQ(sendingFault(flow), "");
    for (const auto& key : {signsOnly.text(), std::string{"no key"}}) {
        flow.applicationLevelEncryptionPins = {key};
        EXPECT_THAT(sendingFault(flow), testing::HasSubstr("applicationLevelEncryptionPins"));
    }
    EXPECT_EQ(ERR_GET_LIB(ERR_get_error()), ERR_LIB_USER) << "an error of the host's";
    EXPECT_EQ(ERR_get_error(), 0UL) << "and none of ours";
}

/// The document proxy, in the hands of the test.
class SendingTest : public testing::Test {
protected:
    SendingTest() {
        platform::Services services;
        services.mainQueue = loop;
        services.urlSessions = network;
        platform::install(services);
        flow.baseUrl = "https://proxy.example/biodata";
        flow.accessKey = "secret";
    }

    Sending::Outcome answered(platform::UrlOutcome answer) {
        std::vector<Sending::Outcome> heard;
        const auto sending = Sending::start(flow, document, [&](auto outcome) { heard.push_back(std::move(outcome)); });
        network->requests.back().answer(answer);
        network->requests.back().answer(std::move(answer));
        loop->drain();
        EXPECT_EQ(heard.size(), 1U);
        return heard.empty() ? std::unexpected{FailureReason::other} : heard.front();
    }

    std::shared_ptr<platform::RunLoop> loop = std::make_shared<platform::RunLoop>();
    std::shared_ptr<test::ScriptedUrlSessions> network = std::make_shared<test::ScriptedUrlSessions>();
    NFCWithAccessControlFlow flow;
    ReadDocument document{.type = platform::readid::DocumentType::identityCardTD2, .lines = {"I<UTO", "D2314"}};
};

TEST_F(SendingTest, SendsWhatWasReadAndNothingElse) {
    document.chip = ChipDocument{.files = {{DocumentFile::dg1, bytesOf("one")}, {DocumentFile::sod, bytesOf("seal")}},
                                 .access = ChipDocument::Access::pace,
                                 .verdict = {.dataIsUnchanged = Proof::proven, .chipIsGenuine = Proof::refuted}};
    EXPECT_EQ(answered(platform::UrlResponse{.status = 200, .headers = {}, .body = R"({"sessionId":"r1"})"}), "r1");
    const auto& sent = network->requests.back();
    EXPECT_EQ(sent.request.url, "https://proxy.example/biodata/readings");
    EXPECT_THAT(sent.configuration.headers, testing::Contains(platform::HttpHeader{"X-Access-Key", "secret"}));
    EXPECT_EQ(nlohmann::json::parse(sent.request.body), nlohmann::json::parse(R"({
        "document-type": "identityCardTD2",
        "page": {"lines": ["I<UTO", "D2314"]},
        "chip": {
            "access": "pace",
            "files": {"DG1": "b25l", "SOD": "c2VhbA=="},
            "verdict": {"data-is-unchanged": "proven", "signature-holds": "not-tried", "signer-is-trusted": "not-tried",
                        "signer-is-not-revoked": "not-tried", "dates-hold": "not-tried", "chip-is-genuine": "refuted"}
        }})"));
    document.lines.clear();
    document.chip->access = ChipDocument::Access::basicAccessControl;
    flow.applicationLevelEncryptionPins = {base64Of(std::string(32, 'k'))};
    EXPECT_FALSE(answered(platform::UrlResponse{.status = 500, .headers = {}, .body = {}}));
    const auto sealed = nlohmann::json::parse(network->requests.back().request.body);
    EXPECT_EQ(sealed.size(), 1U);
    EXPECT_TRUE(sealed.at("sealed-cms").is_string());
}

TEST_F(SendingTest, NamesTheReasonOfEachEnd) {
    const auto says = [](int status, std::string body = {}) -> platform::UrlOutcome {
        return platform::UrlResponse{.status = status, .headers = {}, .body = std::move(body)};
    };
    const auto breaks = [](UrlErrorKind kind) -> platform::UrlOutcome {
        return std::unexpected{platform::UrlError{.kind = kind, .text = {}}};
    };
    const std::pair<platform::UrlOutcome, FailureReason> rows[] = {
        {says(401), FailureReason::authorisationError},
        {says(403), FailureReason::authorisationError},
        {says(410), FailureReason::sessionExpired},
        {says(429), FailureReason::tooManyRequestsError},
        {says(500), FailureReason::serverSessionError},
        {says(201, R"({"sessionId":"r1"})"), FailureReason::serverSessionError},
        {says(200, R"({"sessionId":7})"), FailureReason::serverSessionError},
        {says(200, R"({"sessionId":""})"), FailureReason::serverSessionError},
        {says(200, R"([])"), FailureReason::serverSessionError},
        {says(200, R"({"sessionId":")" + std::string(257, 'r') + "\"}"), FailureReason::serverSessionError},
        {breaks(UrlErrorKind::pinMismatch), FailureReason::sslError},
        {breaks(UrlErrorKind::serverCertificateUntrusted), FailureReason::sslError},
        {breaks(UrlErrorKind::secureConnectionFailed), FailureReason::sslError},
        {breaks(UrlErrorKind::timedOut), FailureReason::connectionError},
        {breaks(UrlErrorKind::cannotConnect), FailureReason::connectionError},
    };
    for (const auto& [answer, reason] : rows) {
        const auto outcome = answered(answer);
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error(), reason) << network->requests.size();
    }
    network->isExhausted = true;
    std::optional<Sending::Outcome> heard;
    const auto sending = Sending::start(flow, document, [&](auto outcome) { heard = std::move(outcome); });
    loop->drain();
    EXPECT_EQ(heard, Sending::Outcome{std::unexpected{FailureReason::connectionError}});
}

TEST_F(SendingTest, TellsNobodyAfterItWasGivenUp) {
    bool isTold = false;
    auto sending = Sending::start(flow, document, [&](const auto&) { isTold = true; });
    EXPECT_TRUE(network->requests.back().isWanted());
    sending.reset();
    EXPECT_FALSE(network->requests.back().isWanted());
    network->requests.back().answer(R"({"sessionId":"r1"})");
    loop->drain();
    EXPECT_FALSE(isTold);
}

TEST_F(SendingTest, RefusesAddressesThatAreNotHttps) {
    for (const auto& address : {std::optional<std::string>{}, std::optional<std::string>{"http://proxy.example"},
                                std::optional<std::string>{"https://"}, std::optional<std::string>{"https://a@b"}}) {
        flow.baseUrl = address;
        EXPECT_THAT(sendingFault(flow), testing::HasSubstr("baseUrl")) << address.value_or("none");
    }
}

} // namespace
} // namespace kivo::reader
