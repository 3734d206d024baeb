#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "support/Eventually.hpp"
#include "support/HostFixture.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <algorithm>

/// What a session asks of the transport.
namespace kivo {
namespace {

using namespace std::chrono_literals;
using simulator::Endpoint;
using simulator::Fault;

class SessionTransport : public test::HostFixture {
protected:
    SessionTransport() { EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION)); }

    std::shared_ptr<KivoAPI> session = KivoSDK::load("KEY", "18");
};

TEST_F(SessionTransport, NothingIsSentTwice) {
    const std::pair<Endpoint, Call> all[] = {
        {Endpoint::update, [&](auto response) { session->update("inform", "m", response); }},
        {Endpoint::status, [&](auto response) { session->status(response); }},
        {Endpoint::commit, [&](auto response) { session->commit(response); }},
        {Endpoint::upload, [&](auto response) { session->upload(AcquisitionObject::selfieImage, "d", response); }},
        {Endpoint::update,
         [](const auto& response) {
             const auto stored = storedSession();
             CommunicationSecurityManager::shared().updateFailureOnServer({}, &*stored);
             response(std::unexpected{ResponseCode::NO_RESPONSE});
         }},
        {Endpoint::join, [&](auto response) { session->join("123456", config(), response); }},
    };
    for (const auto& [endpoint, call] : all) {
        SCOPED_TRACE(name(endpoint));
        Attempts::shared().setRetryLimit(3);
        const auto earlier = requestsTo(endpoint).size();
        answerTo(call);
        ASSERT_TRUE(test::eventually([&] { return requestsTo(endpoint).size() > earlier; }));
        // By their bodies, because failures are reported to one of the endpoints.
        const auto body = requestsTo(endpoint).back().body;
        const auto count = [&] {
            return std::ranges::count(requestsTo(endpoint), body, &simulator::RecordedRequest::body);
        };
        const auto before = count();
        service.inject(endpoint, Fault::reset());
        EXPECT_FALSE(answerTo(call).outcome);
        EXPECT_TRUE(test::eventually([&] { return count() > before; }));
        // What would be sent again is on its way at once, ahead of another exchange.
        service.clearFaults();
        answerTo([&](auto response) { session->update("inform", "barrier", response); });
        EXPECT_EQ(count(), before + 1);
    }
}

TEST_F(SessionTransport, HangingNoticesHoldUpNoRequest) {
    constexpr int asManyAsAServerGets = 6;
    const auto stored = storedSession();
    service.inject(Endpoint::update, Fault::drop());
    for (int i = 0; i < asManyAsAServerGets; ++i) {
        CommunicationSecurityManager::shared().updateFailureOnServer({}, &*stored);
    }
    ASSERT_TRUE(service.waitForRequests(1 + asManyAsAServerGets, 30s));
    EXPECT_TRUE(answerTo([&](auto response) { session->status(response); }).succeeded(IdvEvents::SESSION_STATUS));
}

TEST_F(SessionTransport, ARequestHasAMinuteAndAnAnswerAMebibyte) {
    const auto scripted = std::make_shared<test::ScriptedUrlSessions>();
    services.urlSessions = scripted;
    platform::install(services);
    const auto stored = storedSession();
    CommunicationSecurityManager::shared().updateFailureOnServer({}, &*stored);
    ASSERT_EQ(scripted->requests.size(), 1U);
    const auto& request = scripted->requests[0].request;
    const auto& limits = scripted->requests[0].configuration;
    EXPECT_EQ(request.timeout, 60s);
    EXPECT_EQ(limits.requestTimeout, 180s);
    EXPECT_EQ(limits.resourceTimeout, 180s);
    EXPECT_EQ(limits.responseLimit, std::size_t{1} << 20);
}

} // namespace
} // namespace kivo
