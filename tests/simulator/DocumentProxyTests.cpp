#include "support/Answers.hpp"
#include "support/HostFixture.hpp"

#include <kivo/simulator/Passport.hpp>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <openssl/cms.h>
#include <openssl/evp.h>
#include <openssl/x509.h>

#include <atomic>
#include <chrono>
#include <functional>

namespace kivo::simulator {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

std::string base64(const std::vector<std::uint8_t>& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    text.pop_back();
    return text;
}

/// What a reader sends of a passport.
Json documentOf(const Passport& passport, const char* type = "passport") {
    Json files = Json::object();
    for (const auto* const name : {"COM", "SOD", "DG1", "DG2", "DG7", "DG11", "DG12", "DG14", "DG15", "CardAccess"}) {
        if (const auto file = passport.file(name); !file.empty()) {
            files[name] = base64(file);
        }
    }
    Json verdict;
    for (const auto* const proof : {"data-is-unchanged", "signature-holds", "signer-is-trusted",
                                    "signer-is-not-revoked", "dates-hold", "chip-is-genuine"}) {
        verdict[proof] = "proven";
    }
    return {{"document-type", type},
            {"page", {{"lines", passport.zone()}}},
            {"chip", {{"access", "pace"}, {"files", files}, {"verdict", verdict}}}};
}

/// A service with an open session, to which a reader sends.
class SimulatedDocumentProxy : public test::HostFixture {
protected:
    using Time = std::chrono::system_clock::time_point;

    explicit SimulatedDocumentProxy(DocumentEncryption encryption = DocumentEncryption::none)
        : HostFixture{with(encryption, [this] { return now_.load(); })} {
        join(*KivoSDK::load("KEY", "18"));
    }

    /// The violation with which the proxy answers; empty for a document that it takes.
    std::string violationOf(const Json& body) {
        const auto seen = service.violations().size();
        const auto base = service.joinPage().substr(0, service.joinPage().find("/enrol"));
        const auto answer =
            test::summary(test::exchange(*urlSession_, {.url = base + "/session/s1/biodata/readings",
                                                        .method = "POST",
                                                        .headers = {{"Content-Type", "application/json; charset=UTF-8"},
                                                                    {"X-Access-Key", "simulated-access-key"}},
                                                        .body = body.dump()}));
        const auto violations = service.violations();
        const bool isTaken = violations.size() == seen;
        EXPECT_THAT(answer, HasSubstr(isTaken ? "reading-s1-" : "STATUS_BAD_PROTOCOL"));
        return isTaken ? "" : violations.back();
    }

    static IdentityServiceConfiguration with(DocumentEncryption encryption, std::function<Time()> clock) {
        IdentityServiceConfiguration configuration;
        configuration.documentEncryption = encryption;
        configuration.wallClock = std::move(clock);
        return configuration;
    }

    /// The proxy's time.
    std::atomic<Time> now_ = std::chrono::system_clock::now();

    std::shared_ptr<platform::UrlSession> urlSession_ = services.urlSessions->make({});
};

TEST_F(SimulatedDocumentProxy, TakesWhatItsCountrySignedAndNothingElse) {
    const struct {
        ChipFault fault;
        const char* violation;
    } rows[] = {
        {ChipFault::falseDigest(), "DG2 is not what"},
        {ChipFault::expiredSigner(), "expired"},
        {ChipFault::unknownCountry(), "issuer"},
        {ChipFault::revokedSigner(), "revoked"},
    };

    Passport passport;
    EXPECT_EQ(violationOf(documentOf(passport)), "");
    for (const auto& row : rows) {
        passport.setFault(row.fault);
        EXPECT_THAT(violationOf(documentOf(passport)), HasSubstr(row.violation));
    }
}

TEST_F(SimulatedDocumentProxy, JudgesDatesByItsOwnClock) {
    const auto today = now_.load();
    const Passport passport;
    const Passport revoked{{.fault = ChipFault::revokedSigner()}};

    const struct {
        std::chrono::days later;
        const char* violation;
    } rows[] = {
        {std::chrono::days{-29}, ""},
        {std::chrono::days{9 * 365}, ""},
        {std::chrono::days{-31}, "not yet valid"},
        {std::chrono::days{10 * 365 + 1}, "expired"},
    };

    for (const auto& row : rows) {
        now_ = today + row.later;
        const auto violation = violationOf(documentOf(passport));
        EXPECT_THAT(violation, HasSubstr(row.violation)) << row.later;
        EXPECT_EQ(violation.empty(), std::string_view{row.violation}.empty()) << violation;
    }
    now_ = today + std::chrono::days{9 * 365};
    EXPECT_THAT(violationOf(documentOf(revoked)), HasSubstr("revoked"));
}

TEST_F(SimulatedDocumentProxy, KnowsEveryFormatDigestAndSignature) {
    using enum SignatureScheme;

    const struct {
        DocumentFormat format;
        const char* type;
        HashFunction digest;
        SignatureScheme signature;
        ActiveAuthentication active;
    } rows[] = {
        {DocumentFormat::td1, "identityCardTD1", HashFunction::sha1, ecdsa, ActiveAuthentication::none},
        {DocumentFormat::td2, "identityCardTD2", HashFunction::sha224, rsa, ActiveAuthentication::ecdsa},
        {DocumentFormat::td3, "passport", HashFunction::sha384, rsaPss, ActiveAuthentication::rsa},
        {DocumentFormat::td3, "passport", HashFunction::sha512, ecdsa, ActiveAuthentication::ecdsa},
    };

    for (const auto& row : rows) {
        PassportConfiguration configuration;
        configuration.format = row.format;
        configuration.digest = row.digest;
        configuration.signature = row.signature;
        configuration.activeAuthentication = row.active;
        const Passport passport{configuration};
        EXPECT_EQ(violationOf(documentOf(passport, row.type)), "") << row.type;
        EXPECT_EQ(passport.file("DG15").empty(), row.active == ActiveAuthentication::none);
    }
}

TEST_F(SimulatedDocumentProxy, NamesTheMemberThatIsWrong) {
    const Passport passport;
    const auto sound = documentOf(passport);

    const struct {
        const char* pointer;
        Json value;
        const char* violation;
    } rows[] = {
        {"/document-type", "identityCardTD1", "lines are not those"},
        {"/document-type", "visa", "unknown \"document-type\""},
        {"/page/lines/0", std::string(44, '<'), "not the zone in the chip's DG1"},
        {"/page/lines", 1, "\"lines\""},
        {"/page/lines/1", std::string(45, '<'), "at most 44"},
        {"/page/more", 1, "unknown member \"more\""},
        {"/chip/access", "open", "\"access\""},
        {"/chip/verdict/dates-hold", "perhaps", "\"verdict\""},
        {"/chip/files/DG3", "AAAA", "unknown member \"DG3\""},
        {"/chip/files/DG7", "AAAA", "DG7 is not what"},
        {"/chip/files/DG15", "AAAA", "DG15 is not what"},
        {"/chip/files/DG2", "?", "no base64"},
        {"/chip/files/DG2", base64(Bytes(201 * 1024)), "at most 200 KiB"},
        {"/chip/files/SOD", "dwEA", "signature"},
        {"/chip/files", Json::object(), "lack DG1"},
        {"/more", 1, "unknown member \"more\""},
    };

    for (const auto& row : rows) {
        auto document = sound;
        document[Json::json_pointer{row.pointer}] = row.value;
        EXPECT_THAT(violationOf(document), HasSubstr(row.violation)) << row.pointer;
    }
    EXPECT_EQ(violationOf({{"document-type", "passport"}, {"page", sound.at("page")}}), "");
    EXPECT_THAT(violationOf({{"document-type", "passport"}}), HasSubstr("neither"));
}

class SealedDocumentProxy : public SimulatedDocumentProxy, public testing::WithParamInterface<DocumentEncryption> {
protected:
    SealedDocumentProxy()
        : SimulatedDocumentProxy{GetParam()} {}

    /// The key that the session has handed out.
    std::string keyInTheAnswerToTheJoin() {
        return Json::parse(service.requests().at(0).answer).at("idp-biodata").at("biodata-encrypt-key");
    }
};

/// The document in a CMS message for the key.
std::string sealedFor(const std::string& keyText, const Json& document) {
    std::vector<std::uint8_t> key(keyText.size() / 4 * 3);
    EVP_DecodeBlock(key.data(), reinterpret_cast<const unsigned char*>(keyText.data()),
                    static_cast<int>(keyText.size()));
    const auto plain = document.dump();
    auto* const data = BIO_new_mem_buf(plain.data(), static_cast<int>(plain.size()));
    auto* const message = CMS_encrypt(nullptr, data, EVP_aes_256_cbc(), CMS_BINARY | CMS_PARTIAL);
    const auto* begin = key.data();
    if (auto* const certificate = d2i_X509(nullptr, &begin, static_cast<long>(key.size()))) {
        CMS_add1_recipient_cert(message, certificate, 0);
        X509_free(certificate);
    } else {
        auto* const copy = static_cast<unsigned char*>(OPENSSL_memdup(key.data(), 32));
        auto* const name = static_cast<unsigned char*>(OPENSSL_memdup("k", 1));
        CMS_add0_recipient_key(message, NID_id_aes256_wrap, copy, 32, name, 1, nullptr, nullptr, nullptr);
    }
    EXPECT_EQ(CMS_final(message, data, nullptr, CMS_BINARY), 1);
    unsigned char* der = nullptr;
    const int length = i2d_CMS_ContentInfo(message, &der);
    const std::vector<std::uint8_t> bytes(der, der + length);
    OPENSSL_free(der);
    CMS_ContentInfo_free(message);
    BIO_free(data);
    return base64(bytes);
}

TEST_P(SealedDocumentProxy, OpensMessagesForTheKeyOfItsSessions) {
    const Passport passport;
    const auto message = sealedFor(keyInTheAnswerToTheJoin(), documentOf(passport));
    EXPECT_EQ(violationOf({{"sealed-cms", message}}), "");
    const auto strange = sealedFor(base64(Bytes(32, 7)), documentOf(passport));
    for (const auto& wrong : {strange, std::string{"AAAA"}, std::string{"?"}}) {
        EXPECT_THAT(violationOf({{"sealed-cms", wrong}}), HasSubstr("no CMS message for the session's key"));
    }
    EXPECT_THAT(violationOf(documentOf(passport)), HasSubstr("\"sealed\"")) << "in the open";
}

INSTANTIATE_TEST_SUITE_P(ForEachKind, SealedDocumentProxy,
                         testing::Values(DocumentEncryption::sharedKey, DocumentEncryption::rsaCertificate,
                                         DocumentEncryption::curveCertificate));

} // namespace
} // namespace kivo::simulator
