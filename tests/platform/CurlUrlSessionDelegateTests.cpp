#include "platform/curl/CurlUrlSession.hpp"
#include "support/Answers.hpp"
#include "support/TestTlsServer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <semaphore>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using test::Answers;
using test::exchange;
using test::reply;
using test::summary;
using test::TestReply;
using test::TestTlsServer;

using Handler = std::function<void(AuthChallengeDisposition)>;

struct Judge final : UrlSessionDelegate {
    using Verdict = std::function<void(const ServerTrust& trust, Handler answer)>;

    explicit Judge(Verdict verdict)
        : decide{std::move(verdict)} {}

    void didReceiveChallenge(const ServerTrust* trust, Handler handler) override {
        seen.push_back(*trust);
        thread = std::this_thread::get_id();
        decide(*trust, std::move(handler));
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const std::shared_ptr<UrlSessionTask>&, std::uint64_t, std::uint64_t) override {}

    const Verdict decide;
    std::vector<ServerTrust> seen;
    std::thread::id thread;
};

struct ProgressWatcher final : UrlSessionDelegate {
    explicit ProgressWatcher(Answers collected)
        : answers{std::move(collected)} {}

    void didReceiveChallenge(const ServerTrust*, Handler) override { FAIL(); }

    void didSendBodyData(const std::shared_ptr<UrlSessionTask>& task, std::uint64_t sent,
                         std::uint64_t expected) override {
        EXPECT_NE(task, nullptr);
        EXPECT_TRUE(answers.seen().empty()) << "progress after the completion";
        reports.emplace_back(sent, expected);
    }

    Answers answers;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
};

void acceptEveryServer(const ServerTrust& /*trust*/, const Handler& answer) {
    answer(AuthChallengeDisposition::useCredential);
}

// The system's trust is of no help here: only the delegate can let a connection through.
std::shared_ptr<UrlSession> judgedSession(const std::shared_ptr<UrlSessionDelegate>& delegate,
                                          UrlSessionConfiguration configuration = {}) {
    return makeCurlUrlSessions("/nonexistent")->make(std::move(configuration), delegate);
}

TEST(CurlServerTrust, LetsTheDelegateAcceptAServerNobodyElseTrusts) {
    TestTlsServer server{[](const auto&) { return reply(200, "hi"); }};
    const auto judge = std::make_shared<Judge>(acceptEveryServer);
    const auto session = judgedSession(judge);
    Answers answers;
    for (int i = 0; i < 2; ++i) {
        session->dataTask({.url = server.url(), .method = "POST", .body = "secret"}, answers.completion());
        EXPECT_EQ(summary(answers.wait(static_cast<std::size_t>(i) + 1).back().outcome), "200 hi");
    }
    ASSERT_EQ(judge->seen.size(), 1U) << "one question a connection";
    EXPECT_EQ(judge->seen[0].host, "localhost");
    EXPECT_EQ(judge->seen[0].chain, std::vector{server.certificate()});
    EXPECT_EQ(judge->thread, answers.seen()[0].thread);
}

TEST(CurlServerTrust, SendsNothingToARefusedServer) {
    const struct {
        const char* how;
        Judge::Verdict decide;
    } rows[] = {
        {"refused",
         [](const auto&, const Handler& answer) { answer(AuthChallengeDisposition::cancelAuthenticationChallenge); }},
        {"dropped", [](const auto&, const Handler&) {}},
        {"refused, then accepted",
         [](const auto&, const Handler& answer) {
             answer(AuthChallengeDisposition::cancelAuthenticationChallenge);
             answer(AuthChallengeDisposition::useCredential);
         }},
        {"refused from elsewhere",
         [](const auto&, const Handler& answer) {
             std::thread{[answer] { answer(AuthChallengeDisposition::cancelAuthenticationChallenge); }}.detach();
         }},
    };

    for (const auto& row : rows) {
        TestTlsServer server{[](const auto&) { return reply(200); }};
        const auto judge = std::make_shared<Judge>(row.decide);
        const auto outcome = exchange(*judgedSession(judge), {.url = server.url(), .method = "POST", .body = "secret"});
        EXPECT_EQ(summary(outcome), "pinMismatch") << row.how;
        EXPECT_TRUE(test::eventually([&] { return server.connections() == 1; }));
        EXPECT_EQ(server.handshakes(), 0) << row.how;
        EXPECT_TRUE(server.requests().empty()) << row.how;
    }
}

TEST(CurlServerTrust, KeepsTheRequestBackUntilTheAnswer) {
    TestTlsServer other{[](const auto&) { return reply(200, "other"); }};
    TestTlsServer server{[](const auto&) { return reply(200, "late"); }};
    std::binary_semaphore asked{0};
    std::optional<Handler> held;
    const auto judge = std::make_shared<Judge>([&](const ServerTrust& trust, Handler answer) {
        if (trust.chain.front() == other.certificate()) {
            answer(AuthChallengeDisposition::useCredential);
            return;
        }
        held = std::move(answer);
        asked.release();
    });
    auto session = judgedSession(judge);
    Answers answers;

    session->dataTask({.url = server.url()}, answers.completion());
    asked.acquire();
    EXPECT_EQ(summary(exchange(*session, {.url = other.url(), .timeout = 20s})), "200 other") << "others go on";
    EXPECT_TRUE(server.requests().empty());
    (*held)(AuthChallengeDisposition::useCredential);
    EXPECT_EQ(summary(answers.wait(1).back().outcome), "200 late");
    EXPECT_EQ(judge->seen.size(), 2U) << "one question a server";

    session = judgedSession(judge);
    session->dataTask({.url = server.url(), .timeout = 200ms}, answers.completion());
    asked.acquire();
    EXPECT_EQ(summary(answers.wait(2).back().outcome), "timedOut");

    const auto task = session->dataTask({.url = server.url()}, answers.completion());
    asked.acquire();
    task->cancel();
    EXPECT_EQ(summary(answers.wait(3).back().outcome), "cancelled");

    session->dataTask({.url = server.url()}, answers.completion());
    asked.acquire();
    exchange(*session, {.url = other.url()});
    (*held)(AuthChallengeDisposition::cancelAuthenticationChallenge);
    EXPECT_EQ(summary(answers.wait(4).back().outcome), "pinMismatch");

    session->dataTask({.url = server.url()}, answers.completion());
    asked.acquire();
    session.reset();
    EXPECT_EQ(summary(answers.wait(5).back().outcome), "cancelled");
    EXPECT_EQ(server.requests().size(), 1U);
}

TEST(CurlServerTrust, AsksAboutEveryConnectionAnew) {
    TestTlsServer server{[](const auto&) { return TestReply{reply(200).bytes, TestReply::After::close}; }};
    const auto judge = std::make_shared<Judge>(acceptEveryServer);
    for (const auto& [session, resumptions] :
         {std::pair{judgedSession(judge), 0}, {makeCurlUrlSessions(server.certificateFile())->make({}), 1}}) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 ");
        }
        EXPECT_EQ(server.resumptions(), resumptions) << "a resumed session would show no certificate";
    }
    EXPECT_EQ(judge->seen.size(), 2U);
}

TEST(CurlServerTrust, LetsNoServerNegotiateAgain) {
    TestTlsServer server{[](const auto&) {
                             return TestReply{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n",
                                              TestReply::After::keepOpen, 9, true};
                         },
                         TestTlsServer::Protocol::tls12};
    const auto judge = std::make_shared<Judge>(acceptEveryServer);
    const auto session = judgedSession(judge);
    EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 xxxxxxxxx");
    EXPECT_TRUE(test::eventually([&] { return server.ended() == 1; })) << "a server gives up when it is told no";
}

TEST(CurlUploadProgress, RisesToTheWholeBodyBeforeTheCompletion) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{5'000'000}}) {
        TestTlsServer server{[](const auto&) { return reply(200); }};
        Answers answers;
        const auto watcher = std::make_shared<ProgressWatcher>(answers);
        const auto session = makeCurlUrlSessions(server.certificateFile())->make({}, watcher);
        session->dataTask({.url = server.url(), .method = "POST", .body = Data(size, 'b')}, answers.completion());
        EXPECT_EQ(summary(answers.wait().at(0).outcome), "200 ");
        ASSERT_FALSE(watcher->reports.empty());
        EXPECT_TRUE(std::ranges::is_sorted(watcher->reports));
        EXPECT_EQ(std::ranges::adjacent_find(watcher->reports), watcher->reports.end());
        EXPECT_EQ(watcher->reports.back(), std::pair(std::uint64_t{size}, std::uint64_t{size}));
    }
}

} // namespace
} // namespace kivo::platform
