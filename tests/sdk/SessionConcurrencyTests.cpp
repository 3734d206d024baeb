#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "support/HostFixture.hpp"

#include <atomic>
#include <set>

namespace kivo {
namespace {

using namespace std::chrono_literals;

class SessionConcurrency : public test::HostFixture {
protected:
    /// Runs the main loop until `done` holds.
    bool runUntil(const std::function<bool()>& done) { return mainLoop->runUntil(done, 60s); }
};

TEST_F(SessionConcurrency, ManyRequestsInFlightAreEachAnsweredOnce) {
    constexpr int rounds = 40;
    const auto session = KivoSDK::load("KEY", "18");
    ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    std::vector<std::unique_ptr<std::atomic<int>>> answers;
    int answered = 0;
    // Counted on the main thread; what runs on the transport's thread must not need the test any more by then.
    const auto count = [&] {
        answers.push_back(std::make_unique<std::atomic<int>>(0));
        return [loop = mainLoop, &answered, &own = *answers.back()](const IdvOutcome&) {
            ++own;
            loop->async([&answered] { ++answered; });
        };
    };
    answers.reserve(rounds * 5);
    for (int i = 0; i < rounds; ++i) {
        session->update("inform", "round " + std::to_string(i), count());
        session->status(count());
        session->commit(count());
        session->upload(AcquisitionObject::selfieImage, "data", count());
        if (i % 10 == 0) {
            session->join("123456", config(), count());
            network->setReachable(i % 20 == 0);
        }
        mainLoop->drain();
    }
    const int expected = rounds * 4 + rounds / 10;
    EXPECT_TRUE(runUntil([&] { return answered == expected; }));
    for (const auto& each : answers) {
        EXPECT_EQ(*each, 1);
    }
    EXPECT_TRUE(service.violations().empty());
}

TEST_F(SessionConcurrency, NoAttemptIsLostOrToldTwice) {
    constexpr int attempts = 60;
    const auto session = KivoSDK::load("KEY", "18");
    ASSERT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    Attempts::shared().setRetryLimit(attempts);
    const auto stored = storedSession();
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 2; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < attempts / 2; ++i) {
                    CommunicationSecurityManager::shared().updateRetryCountLimitOnServer(&*stored);
                }
            });
        }
    }
    EXPECT_EQ(Attempts::shared().retryLimit(), 0);
    ASSERT_TRUE(service.waitForRequests(1 + attempts, 60s));
    std::multiset<std::string> notices;
    for (const auto& request : requestsTo(simulator::Endpoint::update)) {
        notices.insert(request.body);
    }
    std::multiset<std::string> expected;
    for (int remaining = 0; remaining < attempts; ++remaining) {
        expected.insert(R"({"kivo-action":"inform","message":"I:Attempts count decremented to )" +
                        std::to_string(remaining) + R"(","tid":")" + stored->tId + "\"}");
    }
    EXPECT_EQ(notices, expected);
}

TEST_F(SessionConcurrency, AHostMayCallFromInsideAnAnswer) {
    const auto session = KivoSDK::load("KEY", "18");
    int steps = 0;
    // Counted on the main thread; what runs on the transport's thread must not need the test any more by then.
    const auto next = [loop = mainLoop, &steps] { loop->async([&steps] { ++steps; }); };
    session->join("123456", config(), [session, next](const IdvOutcome&) {
        next();
        session->status([session, next](const IdvOutcome& outcome) {
            EXPECT_TRUE(outcome);
            next();
            session->reset();
            session->commit([next](const IdvOutcome& last) {
                EXPECT_EQ(last, IdvOutcome{std::unexpected{ResponseCode::INVALID_COMMIT_SESSION}});
                next();
            });
        });
    });
    EXPECT_TRUE(runUntil([&] { return steps == 3; }));
}

TEST_F(SessionConcurrency, AnAnswerThatComesAfterALaterJoinsChangesNothing) {
    const auto session = KivoSDK::load("KEY", "18");

    // What the earlier join is, and whether it would have joined.
    struct Earlier {
        const char* version;
        const char* code;
    };

    for (const auto& earlier : {Earlier{"18", "123456"}, Earlier{"16", "999999"}, Earlier{"17", "123456"}}) {
        SCOPED_TRACE(std::string{earlier.version} + " with " + earlier.code);
        service.inject(simulator::Endpoint::join, simulator::Fault::slowBody(2s), simulator::Calls::first(1));
        const auto other = KivoSDK::load("KEY", earlier.version);
        const auto asked = service.requests().size();
        test::Collected<IdvOutcome> outcomes;
        other->join(earlier.code, config(), outcomes.completion());
        ASSERT_TRUE(service.waitForRequests(asked + 1, 60s));
        const auto later = join(*session);
        ASSERT_TRUE(later.succeeded(IdvEvents::JOIN_SESSION));
        ASSERT_TRUE(outcomes.seen().empty());

        ASSERT_EQ(outcomes.wait().size(), 1U);
        EXPECT_EQ(outcomes.wait()[0].outcome, IdvOutcome{std::unexpected{ResponseCode::INVALID_JOIN_SESSION}});
        EXPECT_EQ(other->lastFailure()->kind, FailureKind::overtaken);
        const auto status = answerTo([&](auto response) { session->status(response); });
        ASSERT_TRUE(status.succeeded(IdvEvents::SESSION_STATUS));
        EXPECT_EQ((*status.outcome)->data(), (*later.outcome)->data());
        EXPECT_TRUE(answerTo([&](auto response) {
                        session->update("inform", "on", response);
                    }).succeeded(IdvEvents::UPDATE_SESSION));
    }
    EXPECT_EQ(requestsTo(simulator::Endpoint::update).size(), 3U) << "the session was told of a failure not its own";
}

TEST_F(SessionConcurrency, HangingNoticesHoldUpNoRequest) {
    constexpr int asManyAsAServerGets = 6;
    const auto session = KivoSDK::load("KEY", "18");
    EXPECT_TRUE(join(*session).succeeded(IdvEvents::JOIN_SESSION));
    const auto stored = storedSession();
    service.inject(simulator::Endpoint::update, simulator::Fault::drop());
    for (int i = 0; i < asManyAsAServerGets; ++i) {
        CommunicationSecurityManager::shared().updateFailureOnServer({}, &*stored);
    }
    ASSERT_TRUE(service.waitForRequests(1 + asManyAsAServerGets, 60s));
    EXPECT_TRUE(answerTo([&](auto response) { session->status(response); }).succeeded(IdvEvents::SESSION_STATUS));
}

} // namespace
} // namespace kivo
