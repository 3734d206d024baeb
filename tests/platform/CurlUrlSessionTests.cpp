#include "support/Answers.hpp"
#include "support/CurlSessions.hpp"
#include "support/Program.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <openssl/conf.h>
#include <sys/socket.h>

#include <filesystem>

/// What only libcurl, TLS and the threads behind a session show; the seam's own checks are in `PlatformCheck`.
namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using namespace test;
using testing::HasSubstr;
using After = TestReply::After;

// Answers what ends in "quick" and holds everything else.
TestReply holdAllButQuick(const std::string& request) {
    return request.contains("/quick") ? reply(200) : TestReply{"", After::hold};
}

TEST(CurlUrlSession, GivesTheHeadersAsTheyCame) {
    TestTlsServer server{[](const std::string& request) {
        return request.contains("/old") ? reply(307, "", "X-Old: 1\r\nLocation: /new\r\n")
                                        : reply(200, "", "X-Second:  two words \r\n\tand more\r\nX-Empty:\r\n");
    }};
    const auto outcome = exchange(*sessionFor(server), {.url = server.url("/old")});
    ASSERT_TRUE(outcome);
    EXPECT_THAT(outcome->headers, testing::ElementsAre(HttpHeader{"X-Second", "two words and more"},
                                                       HttpHeader{"X-Empty", ""}, HttpHeader{"Content-Length", "0"}));
}

TEST(CurlUrlSession, TellsThePersonWhoReadsTheLogWhatWentWrong) {
    TestTlsServer silent{[](const auto&) { return TestReply{"", After::hold}; }};
    TestTlsServer old{[](const auto&) { return reply(200); }, TestTlsServer::Protocol::tls11};
    const auto closed = TestTlsServer{[](const auto&) { return reply(200); }}.port();
    const auto port = std::to_string(closed);
    const auto strangerFile = std::filesystem::temp_directory_path() / "kivo-no-such-file.pem";

    const struct {
        std::string url;
        std::string text;
        std::chrono::milliseconds timeout = 20s;
        std::chrono::seconds idle{0};
        std::filesystem::path trusted{};
    } rows[] = {
        {silent.url("/p?q"), "localhost port " + std::to_string(silent.port()) + " took longer than 200 ms", 200ms},
        {silent.url(), "stood still", 20s, 1s},
        {"https://localhost:" + port, "Could not connect to localhost port " + port + ": connection refused"},
        {"https://nonexistent.invalid/", "Could not find the host nonexistent.invalid"},
        {old.url(), "secure connection"},
        {old.url(), "kivo-no-such-file.pem", 20s, 0s, strangerFile},
        {"https://127.0.0.1:" + std::to_string(silent.port()), "127.0.0.1"},
    };

    for (const auto& row : rows) {
        const auto& trusted = row.trusted.empty() ? silent.certificateFile() : row.trusted;
        const auto session = makeCurlUrlSessions(trusted)->make({.idleTimeout = row.idle});
        const auto outcome = exchange(*session, {.url = row.url, .timeout = row.timeout});
        ASSERT_FALSE(outcome) << row.url;
        EXPECT_THAT(outcome.error().text, HasSubstr(row.text));
    }
}

TEST(CurlUrlSession, SpeaksTls12AndLaterOnly) {
    // A system that allows older versions does not change that.
    const TemporaryFolder folder;
    const auto lax = folder.write("openssl.cnf", "openssl_conf = c\n[c]\nssl_conf = s\n[s]\nsystem_default = d\n"
                                                 "[d]\nMinProtocol = TLSv1\nCipherString = ALL:@SECLEVEL=0\n");
    ASSERT_EQ(CONF_modules_load_file(lax.c_str(), nullptr, 0), 1);
    using enum TestTlsServer::Protocol;
    for (const auto& [protocol, seen] : {std::pair{tls11, "secureConnectionFailed"}, {tls12, "200 "}, {tls, "200 "}}) {
        TestTlsServer server{[](const auto&) { return reply(200); }, protocol};
        EXPECT_EQ(summary(exchange(*sessionFor(server), {.url = server.url()})), seen);
    }
}

TEST(CurlUrlSession, SendsExactlyTheRequestItWasGiven) {
    TestTlsServer server{[](const auto&) { return reply(200); }};
    const auto session = sessionFor(server, {.headers = {{"X-Session", "s"}, {"Content-Type", "text/plain"}}});
    const auto start = " /path?query HTTP/1.1\r\nHost: localhost:" + std::to_string(server.port()) + "\r\n";

    const std::pair<UrlRequest, std::string> rows[] = {
        {{.method = "POST", .headers = {{"content-type", "application/json"}, {"X-Empty", " "}}, .body = "abc"},
         "POST" + start + "X-Session: s\r\ncontent-type: application/json\r\nX-Empty:\r\nContent-Length: 3\r\n\r\nabc"},
        {{.headers = {{"Content-Length", "7"}, {"X-SESSION", "r"}}},
         "GET" + start + "Content-Type: text/plain\r\nX-SESSION: r\r\n\r\n"},
        {{.method = "PUT"}, "PUT" + start + "X-Session: s\r\nContent-Type: text/plain\r\nContent-Length: 0\r\n\r\n"},
        {{.method = "HEAD"}, "HEAD" + start + "X-Session: s\r\nContent-Type: text/plain\r\n\r\n"},
        {{.body = "b"}, "GET" + start + "X-Session: s\r\nContent-Type: text/plain\r\nContent-Length: 1\r\n\r\nb"},
        {{.method = "DELETE"}, "DELETE" + start + "X-Session: s\r\nContent-Type: text/plain\r\n\r\n"},
    };

    for (auto [request, bytes] : rows) {
        request.url = server.url("/path?query#fragment");
        EXPECT_EQ(summary(exchange(*session, request)), "200 ");
        EXPECT_EQ(server.requests().back(), bytes);
    }
}

struct Judge final : UrlSessionDelegate {
    explicit Judge(AuthChallengeDisposition verdict)
        : disposition{verdict} {}

    void didReceiveChallenge(const ServerTrust*, std::function<void(AuthChallengeDisposition)> answer) override {
        ++questions;
        answer(disposition);
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const std::shared_ptr<UrlSessionTask>&, std::uint64_t, std::uint64_t) override {}

    const AuthChallengeDisposition disposition;
    std::atomic<int> questions = 0;
};

std::shared_ptr<UrlSession> judgedSession(const std::shared_ptr<Judge>& judge) {
    return makeCurlUrlSessions("/nonexistent")->make({}, judge);
}

TEST(CurlServerTrust, AsksAboutEveryConnectionBeforeItsHandshakeEnds) {
    TestTlsServer server{[](const auto&) { return TestReply{reply(200).bytes, After::close}; }};
    const auto accepting = std::make_shared<Judge>(AuthChallengeDisposition::useCredential);
    for (const auto& [session, resumptions] : {std::pair{judgedSession(accepting), 0}, {sessionFor(server), 1}}) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 ");
        }
        EXPECT_EQ(server.resumptions(), resumptions) << "a resumed session would show no certificate";
    }
    EXPECT_EQ(accepting->questions, 2);
    const auto handshakes = server.handshakes();
    const auto refusing = std::make_shared<Judge>(AuthChallengeDisposition::cancelAuthenticationChallenge);
    EXPECT_EQ(summary(exchange(*judgedSession(refusing), {.url = server.url()})), "pinMismatch");
    EXPECT_TRUE(eventually([&] { return server.connections() == handshakes + 1; }));
    EXPECT_EQ(server.handshakes(), handshakes);
}

TEST(CurlServerTrust, LetsNoServerNegotiateAgain) {
    TestTlsServer server{
        [](const auto&) { return TestReply{"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n", After::keepOpen, 9, true}; },
        TestTlsServer::Protocol::tls12};
    const auto session = judgedSession(std::make_shared<Judge>(AuthChallengeDisposition::useCredential));
    EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 xxxxxxxxx");
    EXPECT_TRUE(eventually([&] { return server.ended() == 1; })) << "a server gives up when it is told no";
}

TEST(CurlUrlSession, SendsWhileACallbackHoldsItsThread) {
    TestTlsServer server{[](const auto&) { return reply(200); }};
    const auto judge = std::make_shared<Judge>(AuthChallengeDisposition::useCredential);
    for (const auto& session : {sessionFor(server), judgedSession(judge)}) {
        exchange(*session, {.url = server.url()});
        const auto before = server.requests().size();
        Answers answers;
        std::atomic<bool> isSent = false;
        session->dataTask({.url = server.url()}, [&](const auto&) {
            session->dataTask({.url = server.url()}, answers.completion());
            isSent = eventually([&] { return server.requests().size() == before + 2; });
        });
        answers.wait(1);
        EXPECT_TRUE(isSent);
    }
}

TEST(CurlUrlSession, RacesWithCancellationToOneCompletion) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    Answers answers;
    constexpr std::size_t rounds = 50;
    for (std::size_t i = 0; i < rounds; ++i) {
        const auto task = session->dataTask({.url = server.url("/quick")}, answers.completion());
        std::thread other{[task] { task->cancel(); }};
        task->cancel();
        other.join();
        answers.wait(i + 1);
    }
    exchange(*session, {.url = server.url("/quick")});
    EXPECT_EQ(answers.seen().size(), rounds);
}

bool isInternetSocket(int descriptor) {
    int domain = 0;
    socklen_t size = sizeof domain;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 &&
           (domain == AF_INET || domain == AF_INET6);
}

TEST(CurlUrlSession, LeavesNeitherThreadsNorItsConnectionsToOthers) {
    TestTlsServer server{holdAllButQuick};
    auto session = sessionFor(server);
    exchange(*session, {.url = server.url("/quick")});
    const auto held = session->dataTask({.url = server.url()}, [](const auto&) {});
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 2; }));
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        if (isInternetSocket(descriptor)) {
            EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        }
    }
    session.reset();
    EXPECT_TRUE(eventually([] { return threadsNamed("kivo-network") + threadsNamed("kivo-callbacks") == 0; }))
        << "although a task is still held";
}

struct ExitInFlight : testing::TestWithParam<const char*> {};

TEST_P(ExitInFlight, NeitherHangsNorCrashes) {
    TestTlsServer server{holdAllButQuick};
    const int rounds = GetParam() == std::string_view{"blocked-completion"} ? 2 : 20;
    for (int i = 0; i < rounds; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const auto ended = run(std::string{"exec " KIVO_TEST_PROGRAMS "/ExitInFlight "} + GetParam() + " " +
                               server.url() + " " + server.url("/quick") + " " + server.certificateFile().string());
        EXPECT_TRUE(ended.hasExitedWith(0)) << ended.status;
        // The exiting process waits two seconds at most; the rest is for a busy machine.
        EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
    }
}

INSTANTIATE_TEST_SUITE_P(CurlUrlSession, ExitInFlight,
                         testing::Values("return", "exit", "exit-in-completion", "blocked-completion"));

} // namespace
} // namespace kivo::platform
