#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "support/ForgedCertificate.hpp"
#include "support/HostFixture.hpp"
#include "support/PropertyLists.hpp"
#include "support/TestTlsServer.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <gmock/gmock.h>

namespace kivo {
namespace {

using simulator::CertificateAuthority;
using simulator::CertificateFlaw;
using simulator::Endpoint;
using simulator::Fault;
using simulator::IdentityService;
using simulator::KeyType;
using test::reply;
using test::TestTlsServer;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr auto pinningFailed = ResponseCode::UNSECURE_SERVER_PINNING_FAILED;

std::string listOf(const std::vector<std::string>& pins) {
    std::string entries;
    for (const auto& pin : pins) {
        entries += "<string>" + pin + "</string>";
    }
    return test::propertyList("<array>" + entries + "</array>");
}

/// A host whose bundle lists pins, and a service with a host name for each endpoint: each is a connection of its own.
class Pinning : public test::HostFixture {
protected:
    Pinning()
        : HostFixture{withKey(KeyType::rsa2048)} {
        KivoSDK::setLogLevel(LogLevel::debug);
        session = KivoSDK::load("KEY", "18");
    }

    static simulator::IdentityServiceConfiguration withKey(KeyType keyType) {
        auto configuration = defaultConfiguration(/*hostPerEndpoint=*/true);
        configuration.keyType = keyType;
        return configuration;
    }

    void writeList(const std::string& bytes) const {
        std::filesystem::remove_all(list());
        folder.write("Host.bundle/readid_certificates.plist", bytes);
    }

    std::filesystem::path list() const { return folder.path() / "Host.bundle/readid_certificates.plist"; }

    /// Joins at this address and keeps what was logged meanwhile.
    test::Answered joinAt(const std::string& page) {
        Deployment::install({.joinPages = {page, page, page, page}, .requiresPins = requiresPins});
        testing::internal::CaptureStdout();
        auto answered = join(*session);
        logged = testing::internal::GetCapturedStdout();
        return answered;
    }

    std::shared_ptr<KivoAPI> session;
    bool requiresPins = false;
    std::string logged;
};

TEST_F(Pinning, OnlyAServerWhoseLeafOrIntermediateIsListedGetsAByte) {
    IdentityService ec{withKey(KeyType::ec256)};
    IdentityService rsa4096{withKey(KeyType::rsa4096)};
    const auto pins = service.pins();
    const auto other = CertificateAuthority{}.issue({}).pins.leaf;
    const auto both = listOf({pins.leaf, pins.intermediate});
    const std::string text = "<string>" + pins.leaf + "</string>";

    const struct {
        const char* what;
        std::string list;
        /// What the log says why the server is refused; empty where the server is let through.
        std::string refusal{};
        CertificateFlaw flaw = CertificateFlaw::none;
        /// What the log warns of.
        std::string warning{};
        IdentityService* server = nullptr;
    } rows[] = {
        {"leaf", listOf({pins.leaf})},
        {"intermediate", listOf({pins.intermediate})},
        {"the last of many", listOf({other, other, pins.leaf})},
        {"beside a faulty entry", listOf({"no pin", pins.leaf})},
        {"binary list", test::binaryPropertyList(listOf({pins.leaf}))},
        {"key on a curve", listOf({ec.pins().leaf}), "", CertificateFlaw::none, "", &ec},
        {"RSA 4096", listOf({rsa4096.pins().leaf}), "", CertificateFlaw::none, "", &rsa4096},
        {"expired leaf", both, "", CertificateFlaw::expired, "its certificate expired on 20"},
        {"leaf of tomorrow", both, "", CertificateFlaw::notYetValid, "its certificate is not valid before 20"},
        {"leaf of another host", both, "", CertificateFlaw::wrongHost,
         "The pin lets join.localhost through although its certificate is for another host."},
        {"another pin", listOf({other}), "plist allows: " + other + ". If"},
        {"another authority", both, pins.intermediate + ". If", CertificateFlaw::untrustedAuthority},
        {"self-signed", both, pins.intermediate + ". If", CertificateFlaw::selfSigned},
        {"empty list", listOf({}), "plist allows: none (it is empty)"},
        {"empty file", "", "none (it cannot be read as a property list)"},
        {"damaged file", listOf({pins.leaf}).substr(0, 90), "none (it cannot be read as a property list)"},
        {"no list", test::propertyList("<dict><key>a</key>" + text + "</dict>"), "none (its root is not an array)"},
        {"an entry that is no text", test::propertyList("<array>" + text + "<integer>1</integer></array>"),
         "none (entry 2 is not text, and so the whole list counts for nothing)"},
        {"white space", listOf({pins.leaf + " "}), "(entry 1 has white space in it)"},
        {"hexadecimal", listOf({other, std::string(64, 'a')}), "(entry 2 has 48 bytes and not the 32 of a digest)"},
        {"case", listOf({"sha256/" + pins.leaf}), "(entry 1 is not base64)"},
    };

    const auto expectRefusal = [&](const std::string& explanation) {
        const auto connections = service.connections();
        const auto requests = service.requests().size();
        EXPECT_EQ(joinAt(service.joinPage()).code(), pinningFailed);
        EXPECT_EQ(service.connections(), connections);
        EXPECT_EQ(service.requests().size(), requests);
        EXPECT_THAT(logged, HasSubstr("\u2013 FAILED\n"));
        EXPECT_THAT(logged, HasSubstr("No certificate of join.localhost is pinned. Its pins: leaf "));
        EXPECT_THAT(logged, HasSubstr(explanation));
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        writeList(row.list);
        auto& server = row.server == nullptr ? service : *row.server;
        server.inject(Endpoint::join, Fault::certificate(row.flaw));
        if (!row.refusal.empty()) {
            expectRefusal(row.refusal);
            EXPECT_EQ(logged.contains("leaf " + pins.leaf + ", intermediate " + pins.intermediate + ". "),
                      row.flaw == CertificateFlaw::none);
            continue;
        }
        EXPECT_TRUE(joinAt(server.joinPage()).succeeded(IdvEvents::JOIN_SESSION));
        EXPECT_THAT(logged, ContainsRegex("\u2753[^\n]* \u2013 \n( -){10} SSL PINNNING ( -){10} \n\n"
                                          "\u2753[^\n]*didReceive:completionHandler:\\) \u2013 SUCCESS\n"
                                          "\u2753[^\n]* \u2013 \n( -){12}  END( -){8} ( -){4} \n\n"));
        EXPECT_THAT(logged, Not(HasSubstr("\u274C")));
        EXPECT_EQ(logged.contains("\u26A0\uFE0F"), !row.warning.empty());
        EXPECT_THAT(logged, HasSubstr(row.warning));
    }
    std::filesystem::remove(list());
    std::filesystem::create_symlink("/nowhere", list());
    expectRefusal("none (it cannot be read as a property list)");
}

TEST_F(Pinning, WithoutAListTheSystemDecidesUnlessTheDeploymentRequiresPins) {
    EXPECT_TRUE(joinAt(service.joinPage()).succeeded(IdvEvents::JOIN_SESSION));
    EXPECT_THAT(logged, Not(HasSubstr("didReceive")));
    requiresPins = true;
    EXPECT_EQ(joinAt(service.joinPage()).code(), pinningFailed);
    EXPECT_EQ(service.requests().size(), 1U);
    EXPECT_THAT(logged, HasSubstr("says where its bundle lies in platform::LinuxOptions::mainBundle). If"));
    writeList(listOf({service.pins().leaf}));
    EXPECT_TRUE(joinAt(service.joinPage()).succeeded(IdvEvents::JOIN_SESSION));
}

TEST_F(Pinning, AChainEndsWhereNobodySigned) {
    const CertificateAuthority pinned;
    const auto genuine = pinned.issue({});
    // On the same type of key as the pinned authority, so that nothing but the signature tells them apart.
    const auto foreign = CertificateAuthority{}.issue({.keyType = KeyType::ec256});
    const auto intermediate = test::certificatesIn(genuine.chain).at(1);
    const auto foreignParts = test::certificatesIn(foreign.chain);
    const auto forged = test::forgedLeaf(intermediate, foreign.privateKey);
    const auto belowALeaf = test::forgedLeaf(genuine.chain, genuine.privateKey);
    // An authority on the list that may sign leaves only, and one that may have an authority below itself.
    const auto strict = test::forgedLeaf(genuine.chain, genuine.privateKey, "critical,CA:TRUE,pathlen:0");
    const auto lenient = test::forgedLeaf(genuine.chain, genuine.privateKey, "critical,CA:TRUE,pathlen:1");
    const auto pinOf = [&](const std::string& pem) {
        return *certificatePin(*platform::services().trust, test::derOf(pem));
    };
    writeList(listOf({genuine.pins.intermediate, pinOf(strict.chain), pinOf(lenient.chain)}));
    const auto twoBelow = [](const simulator::IssuedCertificate& authority) {
        auto between = test::forgedLeaf(authority.chain, authority.privateKey, "critical,CA:TRUE");
        auto leaf = test::forgedLeaf(between.chain, between.privateKey);
        leaf.chain += between.chain + authority.chain;
        return leaf;
    };
    const auto tooLong = twoBelow(strict);
    const auto justRight = twoBelow(lenient);

    const struct {
        const char* what;
        std::string chain;
        std::string key;
        bool isLetThrough = false;
    } rows[] = {
        {"appended", foreign.chain + intermediate, foreign.privateKey},
        {"put in between", foreignParts[0] + intermediate + foreignParts[1], foreign.privateKey},
        {"named as the issuer", forged.chain + intermediate, forged.privateKey},
        {"above a leaf that signs", belowALeaf.chain + genuine.chain, belowALeaf.privateKey},
        {"longer than the authority allows", tooLong.chain, tooLong.privateKey},
        {"as long as the authority allows", justRight.chain, justRight.privateKey, true},
        {"out of order", test::certificatesIn(genuine.chain)[0] + pinned.root() + intermediate, genuine.privateKey,
         true},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        TestTlsServer server{
            [](const auto&) { return reply(200, "{}"); }, TestTlsServer::Protocol::tls, {row.chain, row.key, {}}};
        const auto answered = joinAt(server.url());
        EXPECT_EQ(answered.code(), row.isLetThrough ? ResponseCode::UNKNOWN_ERROR : pinningFailed);
        EXPECT_EQ(server.handshakes(), row.isLetThrough ? 1 : 0);
        EXPECT_EQ(server.requests().size(), row.isLetThrough ? 1U : 0U);
        EXPECT_EQ(logged.contains("\u274C"), !row.isLetThrough);
    }
}

TEST_F(Pinning, EveryOperationTellsAMismatchFromOtherFailures) {
    writeList(listOf({service.pins().leaf}));
    for (const auto& [endpoint, call, event, transportFailure] : operationsOf(session)) {
        SCOPED_TRACE(name(endpoint));
        service.clearFaults();
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        Attempts::shared().setRetryLimit(3);
        service.inject(endpoint, Fault::reset());
        EXPECT_EQ(answerTo(call).code(), transportFailure);

        service.clearFaults();
        ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
        const auto before = operationsAt(endpoint);
        // Closes the connections that the good certificate opened.
        service.inject(endpoint, Fault::certificate(CertificateFlaw::selfSigned));
        EXPECT_EQ(answerTo(call).code(), pinningFailed);
        EXPECT_EQ(operationsAt(endpoint), before);
    }
}

TEST_F(Pinning, ARedirectLeadsToPinnedServersOnly) {
    IdentityService elsewhere{withKey(KeyType::ec256)};
    writeList(listOf({service.pins().leaf}));
    service.inject(Endpoint::join, Fault::redirect(elsewhere.joinPage(), 307));
    EXPECT_EQ(joinAt(service.joinPage()).code(), pinningFailed);
    EXPECT_EQ(elsewhere.connections(), 0U);
    EXPECT_TRUE(elsewhere.requests().empty());

    writeList(listOf({service.pins().leaf, elsewhere.pins().intermediate}));
    EXPECT_TRUE(joinAt(service.joinPage()).succeeded(IdvEvents::JOIN_SESSION));
    EXPECT_EQ(elsewhere.requests().size(), 1U);
}

TEST_F(Pinning, ASessionsCookiesEndWithIt) {
    const auto issued = CertificateAuthority{}.issue({});
    std::string answer;
    TestTlsServer server{[&](const auto&) { return reply(200, answer, "Set-Cookie: of=joined; Path=/\r\n"); },
                         TestTlsServer::Protocol::tls, issued};
    answer = R"({"response-type":"data","tid":"T","idp-config":{"status-endpoint":")" + server.url("/status") + "\"}}";
    const auto cookies = [&] {
        std::string seen;
        for (const auto& request : server.requests()) {
            seen += request.contains("of=joined") ? 'c' : '-';
        }
        return seen;
    };
    writeList(listOf({issued.pins.leaf}));
    const auto status = [&] { answerTo([&](auto response) { session->status(response); }); };
    joinAt(server.url());
    status();
    joinAt(server.url());
    status();
    EXPECT_EQ(cookies(), "-c-c");
    session->reset();
    storeJoinAnswer(answer); // as another process does
    status();
    EXPECT_EQ(cookies(), "-c-c-");
}

TEST_F(Pinning, AChallengeWithoutAServerIsRefused) {
    const platform::ServerTrust empty{.host = "localhost", .chain = {}};
    for (const auto* trust : {static_cast<const platform::ServerTrust*>(nullptr), &empty}) {
        std::vector<platform::AuthChallengeDisposition> answers;
        CommunicationSecurityManager::shared().didReceiveChallenge(trust,
                                                                   [&](auto answer) { answers.push_back(answer); });
        EXPECT_EQ(answers, std::vector{platform::AuthChallengeDisposition::cancelAuthenticationChallenge});
    }
}

} // namespace
} // namespace kivo
