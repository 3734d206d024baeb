#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/KeychainWrapper.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "support/HostFixture.hpp"

namespace kivo {
namespace {

using simulator::Endpoint;

class SessionWire : public test::HostFixture {
protected:
    SessionWire() {
        device->addresses = {{"lo", platform::AddressFamily::ipv4, "127.0.0.1"},
                             {"en0", platform::AddressFamily::ipv4, "192.0.2.7"},
                             {"en1", platform::AddressFamily::ipv4, "192.0.2.8"},
                             {"pdp_ip0", platform::AddressFamily::ipv6, "2001:db8::7"},
                             {"pdp_ip1", platform::AddressFamily::other, "nowhere"}};
        session = KivoSDK::load("KEY", "183");
    }

    std::shared_ptr<KivoAPI> session;
};

std::string headerOf(const simulator::RecordedRequest& request, std::string_view wanted) {
    for (const auto& [name, value] : request.headers) {
        if (name == wanted) {
            return value;
        }
    }
    return "";
}

TEST_F(SessionWire, SendsTheJoinWithDeviceAndConfiguration) {
    ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    const auto joins = requestsTo(Endpoint::join);
    ASSERT_EQ(joins.size(), 1U);
    EXPECT_EQ(joins[0].method, "POST");
    EXPECT_EQ(headerOf(joins[0], "Content-Type"), "application/json; charset=UTF-8");
    EXPECT_EQ(joins[0].body,
              R"({"kivo-action":"init","kivo-init-code":"123456","kivo-device-code":"1801KEY","app-info":{)"
              R"("appVersion":"2.1.","os":"iOS 12.5","networkType":"WiFi","NetworkIpAddress":"2001:db8::7",)"
              R"("networkMacAddress":"","deviceModel":"x86_64","deviceSerialNo":"","expiryDateLeafCert":"06/04/2026",)"
              R"("expiryDateIntermediateCert":"03/29/2031","sdkVersion":")" KIVO_SDK_VERSION
              R"(","deviceId":"6E1F0B7C-0000-4000-8000-00000000C0DE","apiLevel":"NA"},"app-config":{)"
              R"("target-env":"TEST","kivo-app-doclist":"PASSPORT","kivo-expiry-grace":"P6M",)"
              R"("kivo-facematch-min":"0.8","kivo-doc-issuers":"UTO","kivo-images":"face"}})");
    EXPECT_TRUE(service.violations().empty());
}

TEST_F(SessionWire, OpensTheResumePageOfAJoinedSessionOnly) {
    session->resumeInBrowser();
    EXPECT_TRUE(workspace->opened.empty());
    join(*session);
    session->resumeInBrowser();
    ASSERT_EQ(workspace->opened.size(), 1U);
    EXPECT_EQ(workspace->opened[0], storedSession()->idpConfig.at("resume-endpoint"));
}

TEST_F(SessionWire, KeepsTheAnswerAndTheCodeUntilReset) {
    join(*session);
    EXPECT_EQ(storedJoinAnswer(), requestsTo(Endpoint::join).at(0).answer);
    EXPECT_EQ(KeychainWrapper::standard().data("qr_code"), "123456");
    session->reset();
    EXPECT_FALSE(storedJoinAnswer());
    EXPECT_EQ(KeychainWrapper::standard().data("qr_code"), "123456");
    EXPECT_EQ(answerTo([&](auto response) { session->status(response); }).code(), ResponseCode::INVALID_STATUS_SESSION);
}

TEST_F(SessionWire, AppliesTheRetryLimitOfTheAnswer) {
    struct Row {
        std::string idpConfig;
        bool applies;
        std::int64_t limit;
    };

    const Row rows[] = {
        {R"({"retry-limit":"3"})", true, 3},
        {R"({"retry-limit":"-2"})", true, -2},
        {R"({"retry-limit":"+4"})", true, 4},
        {R"({"retry-limit":"+-4"})", true, 0},
        {R"({"retry-limit":"3a"})", true, 0},
        {R"({"retry-limit":" 3"})", true, 0},
        {R"({"retry-limit":""})", true, 0},
        {R"({"retry-limit":"9223372036854775808"})", true, 0},
        {R"({"update-endpoint":"https://localhost/"})", false, 77},
        {"{}", false, 77},
    };
    for (const auto& row : rows) {
        Attempts::shared().setRetryLimit(77);
        service.clearFaults();
        service.inject(Endpoint::join, simulator::Fault::answer(R"({"response-type":"data","tid":"T1","idp-config":)" +
                                                                row.idpConfig + "}"));
        const auto joined = join(*session);
        ASSERT_TRUE(joined.succeeded(IdvEvents::JOIN_SESSION)) << row.idpConfig;
        EXPECT_EQ((*joined.outcome)->data(), "T1");
        EXPECT_EQ(KivoSDK::shouldApplyRetryLimit(), row.applies) << row.idpConfig;
        EXPECT_EQ(Attempts::shared().retryLimit(), row.limit) << row.idpConfig;
        if (row.limit < 1) {
            const auto upload = [&](auto response) { session->upload(AcquisitionObject::selfieImage, "A", response); };
            EXPECT_EQ(answerTo(upload).code(), ResponseCode::RETRY_LIMIT_REACHED) << row.idpConfig;
        }
    }
}

} // namespace
} // namespace kivo
