#include "platform/curl/CurlUrlSession.hpp"

#include "support/Answers.hpp"
#include "support/TestTlsServer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using test::exchange;
using test::reply;
using test::summary;
using test::TestReply;
using test::TestTlsServer;
using testing::HasSubstr;
using testing::Not;
using After = TestReply::After;

std::shared_ptr<UrlSession> sessionFor(const TestTlsServer& server, UrlSessionConfiguration configuration = {}) {
    return makeCurlUrlSessions(server.certificateFile())->make(std::move(configuration));
}

std::string pathOf(const std::string& request) {
    const auto start = request.find(' ') + 1;
    return request.substr(start, request.find(' ', start) - start);
}

TEST(CurlUrlSession, ReportsEveryHttpAnswerAsAResponse) {
    const struct {
        std::string bytes;
        std::string seen;
    } rows[] = {
        {reply(200, "hello").bytes, "200 hello"},
        {reply(200).bytes, "200 "},
        {"HTTP/1.1 204 No content\r\n\r\n", "204 without body"},
        {reply(205).bytes, "205 without body"},
        {"HTTP/1.1 304 Not modified\r\n\r\n", "304 without body"},
        {reply(301, "nowhere").bytes, "301 nowhere"},
        {reply(400, "bad").bytes, "400 bad"},
        {reply(500, "oops").bytes, "500 oops"},
        {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\nX-Late: 1\r\n\r\n", "200 abc"},
        {"HTTP/1.1 102 Wait\r\nX-Early: 1\r\n\r\n" + reply(201, "made").bytes, "201 made"},
    };

    std::size_t row = 0;
    TestTlsServer server{[&](const auto&) { return TestReply{rows[row].bytes}; }};
    const auto session = sessionFor(server);
    for (; row < std::size(rows); ++row) {
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), rows[row].seen);
    }
    EXPECT_EQ(server.connections(), 1) << "all on one connection";
}

TEST(CurlUrlSession, GivesTheHeadersOfTheFinalAnswerOnly) {
    TestTlsServer server{[](const std::string& request) {
        return pathOf(request) == "/old" ? reply(302, "", "Location: /new\r\nX-First: 1\r\n")
                                         : reply(200, "", "X-Second:  two words \r\nX-Empty:\r\n");
    }};
    const auto outcome = exchange(*sessionFor(server), {.url = server.url("/old")});
    ASSERT_TRUE(outcome);
    EXPECT_THAT(outcome->headers, testing::ElementsAre(HttpHeader{"X-Second", "two words"}, HttpHeader{"X-Empty", ""},
                                                       HttpHeader{"Content-Length", "0"}));
}

TEST(CurlUrlSession, TellsFailuresApartWithoutRevealingTheRequest) {
    const struct {
        std::string path;
        TestReply reply;
        UrlErrorKind kind;
        std::string text;
    } rows[] = {
        {"/to-http", reply(302, "", "Location: http://localhost:1/\r\n"), UrlErrorKind::unsupportedScheme, "https"},
        {"/loop", reply(302, "", "Location: /loop\r\n"), UrlErrorKind::tooManyRedirects, "redirects"},
        {"/to-nonsense", reply(302, "", "Location: https://[\r\n"), UrlErrorKind::badAnswer, "not valid HTTP"},
        {"/truncated",
         {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", After::close},
         UrlErrorKind::connectionLost,
         "lost"},
        {"/nothing", {"", After::close}, UrlErrorKind::connectionLost, "lost"},
        {"/reset",
         {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", After::reset},
         UrlErrorKind::connectionLost,
         "lost"},
        {"/garbage", {"garbage instead of http\r\n\r\n", After::close}, UrlErrorKind::badAnswer, "not valid HTTP"},
        {"/chunks",
         {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", After::hold},
         UrlErrorKind::badAnswer,
         "not valid HTTP"},
        {"/silent", {"", After::hold}, UrlErrorKind::timedOut, "longer than 200 ms"},
        {"/stalled",
         {"HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", After::hold},
         UrlErrorKind::timedOut,
         "longer than 200 ms"},
    };

    std::atomic<std::size_t> row = 0;
    TestTlsServer server{[&](const auto&) { return rows[row].reply; }};
    const auto session = sessionFor(server);
    for (; row < std::size(rows); ++row) {
        SCOPED_TRACE(rows[row].path);
        const auto limit = rows[row].kind == UrlErrorKind::timedOut ? 200ms : 20'000ms;
        const auto outcome = exchange(*session, {.url = server.url(rows[row].path + "?secret=1"),
                                                 .method = "POST",
                                                 .headers = {{"X-Key", "hidden"}},
                                                 .body = "confidential",
                                                 .timeout = limit});
        ASSERT_FALSE(outcome);
        EXPECT_EQ(name(outcome.error().kind), name(rows[row].kind));
        const auto& text = outcome.error().text;
        EXPECT_THAT(text, HasSubstr(rows[row].text));
        EXPECT_THAT(text, HasSubstr("localhost port "));
        for (const auto& secret :
             {std::string{"secret"}, std::string{"hidden"}, std::string{"confidential"}, rows[row].path + "?"}) {
            EXPECT_THAT(text, Not(HasSubstr(secret)));
        }
    }
}

TEST(CurlUrlSession, TellsWhyNoConnectionCameAbout) {
    std::uint16_t closedPort = 0;
    std::filesystem::path strangerFile = std::filesystem::temp_directory_path() / "kivo-no-such-file.pem";
    {
        closedPort = TestTlsServer{[](const auto&) { return reply(200); }}.port();
    }
    TestTlsServer server{[](const auto&) { return reply(200); }};
    TestTlsServer stranger{[](const auto&) { return reply(200); }};
    TestTlsServer plain{[](const auto&) { return TestReply{"HTTP/1.1 400 Bad\r\n\r\n", After::close}; },
                        TestTlsServer::Protocol::plain};

    const struct {
        std::string url;
        std::filesystem::path trusted;
        UrlErrorKind kind;
        std::string text;
    } rows[] = {
        {"https://localhost:" + std::to_string(closedPort), server.certificateFile(), UrlErrorKind::cannotConnect,
         "Could not connect to localhost port " + std::to_string(closedPort) + ": connection refused"},
        {"https://nonexistent.invalid/", server.certificateFile(), UrlErrorKind::cannotFindHost,
         "Could not find the host nonexistent.invalid"},
        {stranger.url(), server.certificateFile(), UrlErrorKind::serverCertificateUntrusted, "self-signed certificate"},
        {"https://127.0.0.1:" + std::to_string(server.port()), server.certificateFile(),
         UrlErrorKind::serverCertificateUntrusted, "127.0.0.1"},
        {plain.url(), server.certificateFile(), UrlErrorKind::secureConnectionFailed, "secure connection"},
        {server.url(), strangerFile, UrlErrorKind::secureConnectionFailed, "kivo-no-such-file.pem"},
    };

    for (const auto& row : rows) {
        const auto outcome = exchange(*makeCurlUrlSessions(row.trusted)->make({}), {.url = row.url});
        ASSERT_FALSE(outcome) << row.url;
        EXPECT_EQ(name(outcome.error().kind), name(row.kind)) << row.url;
        EXPECT_THAT(outcome.error().text, HasSubstr(row.text));
    }
    EXPECT_TRUE(server.requests().empty());
    EXPECT_TRUE(stranger.requests().empty());
}

TEST(CurlUrlSession, SpeaksTls12AndLaterOnly) {
    // A system that allows older versions does not change that. Read when the process first uses TLS.
    const test::TemporaryFolder folder;
    const auto lax = folder.write("openssl.cnf", "openssl_conf = c\n[c]\nssl_conf = s\n[s]\nsystem_default = d\n"
                                                 "[d]\nMinProtocol = TLSv1\nCipherString = ALL:@SECLEVEL=0\n");
    ::setenv("OPENSSL_CONF", lax.c_str(), 1);
    using enum TestTlsServer::Protocol;
    for (const auto& [protocol, seen] : {std::pair{tls11, "secureConnectionFailed"}, {tls12, "200 "}, {tls, "200 "}}) {
        TestTlsServer server{[](const auto&) { return reply(200); }, protocol};
        EXPECT_EQ(summary(exchange(*sessionFor(server), {.url = server.url()})), seen);
    }
}

TEST(CurlUrlSession, RefusesWhatCannotBeSentWithoutTouchingTheNetwork) {
    TestTlsServer server{[](const auto&) { return reply(200); }};
    const auto session = sessionFor(server);
    const auto good = server.url();
    const std::string zero(1, '\0');

    const struct {
        UrlRequest request;
        UrlErrorKind kind;
    } rows[] = {
        {{.url = ""}, UrlErrorKind::badUrl},
        {{.url = "localhost"}, UrlErrorKind::badUrl},
        {{.url = "https:/localhost"}, UrlErrorKind::badUrl},
        {{.url = "https:///localhost"}, UrlErrorKind::badUrl},
        {{.url = good + "a b"}, UrlErrorKind::badUrl},
        {{.url = good + "{x}"}, UrlErrorKind::badUrl},
        {{.url = "https://user@localhost:" + std::to_string(server.port())}, UrlErrorKind::badUrl},
        {{.url = "http://localhost:" + std::to_string(server.port())}, UrlErrorKind::unsupportedScheme},
        {{.url = "ftp://localhost/"}, UrlErrorKind::unsupportedScheme},
        {{.url = good, .headers = {{"X-A", "1\r\nX-B: 2"}}}, UrlErrorKind::unknown},
        {{.url = good, .headers = {{"X-A", "1\nX-B: 2"}}}, UrlErrorKind::unknown},
        {{.url = good, .headers = {{"X-A", zero}}}, UrlErrorKind::unknown},
        {{.url = good, .headers = {{"X-A: 1\r\nX-B", "2"}}}, UrlErrorKind::unknown},
        {{.url = good, .method = "GET / HTTP/1.1\r\nX:"}, UrlErrorKind::unknown},
    };

    for (const auto& row : rows) {
        const auto outcome = exchange(*session, row.request);
        ASSERT_FALSE(outcome) << row.request.url;
        EXPECT_EQ(name(outcome.error().kind), name(row.kind)) << row.request.url;
        EXPECT_FALSE(outcome.error().text.empty());
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST(CurlUrlSession, SendsExactlyTheRequestItWasGiven) {
    TestTlsServer server{[](const auto&) { return reply(200); }};
    const auto session = sessionFor(server, {.headers = {{"X-Session", "s"}, {"Content-Type", "text/plain"}}});
    const auto host = "Host: localhost:" + std::to_string(server.port()) + "\r\n";
    const std::string zero{"a\0b", 3};

    const struct {
        UrlRequest request;
        std::string bytes;
    } rows[] = {
        {{.method = "POST", .headers = {{"content-type", "application/json"}, {"X-Empty", " "}}, .body = zero},
         "POST /path?query HTTP/1.1\r\n" + host +
             "X-Session: s\r\ncontent-type: application/json\r\nX-Empty:\r\nContent-Length: 3\r\n\r\n" + zero},
        {{.headers = {{"Content-Length", "7"}, {"X-SESSION", "r"}}},
         "GET /path?query HTTP/1.1\r\n" + host + "Content-Type: text/plain\r\nX-SESSION: r\r\n\r\n"},
        {{.method = "PUT"},
         "PUT /path?query HTTP/1.1\r\n" + host +
             "X-Session: s\r\nContent-Type: text/plain\r\nContent-Length: 0\r\n\r\n"},
        {{.method = "DELETE"},
         "DELETE /path?query HTTP/1.1\r\n" + host + "X-Session: s\r\nContent-Type: text/plain\r\n\r\n"},
    };

    for (const auto& row : rows) {
        auto request = row.request;
        request.url = server.url("/path?query#fragment");
        EXPECT_EQ(summary(exchange(*session, request)), "200 ");
        EXPECT_EQ(server.requests().back(), row.bytes);
    }
}

TEST(CurlUrlSession, FollowsRedirectsAsBrowsersDo) {
    int status = 0;
    TestTlsServer server{[&](const std::string& request) {
        return pathOf(request) == "/old" ? reply(status, "", "Location: /new\r\n") : reply(200, request.substr(0, 4));
    }};
    const auto session = sessionFor(server);

    const struct {
        int status;
        std::string method;
        std::string followedBy;
        std::string body;
    } rows[] = {
        {301, "POST", "GET ", ""},     {302, "POST", "GET ", ""},     {303, "POST", "GET ", ""},
        {307, "POST", "POST", "body"}, {308, "POST", "POST", "body"}, {302, "PUT", "PUT ", "body"},
        {303, "PUT", "GET ", ""},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.method + " " + std::to_string(row.status));
        status = row.status;
        EXPECT_EQ(summary(exchange(*session, {.url = server.url("/old"), .method = row.method, .body = "body"})),
                  "200 " + row.followedBy);
        const auto last = server.requests().back();
        EXPECT_EQ(last.substr(last.find("\r\n\r\n") + 4), row.body);
    }
}

TEST(CurlUrlSession, KeepsCookiesToItselfUntilToldToForgetThem) {
    std::binary_semaphore mayAnswer{0};
    TestTlsServer server{[&](const std::string& request) {
        const auto path = pathOf(request);
        if (path == "/late") {
            mayAnswer.acquire();
        }
        return reply(200, "", "Set-Cookie: " + path.substr(1) + "=42; Secure; Path=/\r\n");
    }};
    const auto session = sessionFor(server);
    const auto seenBy = [&](UrlSession& sender, const std::string& path) {
        exchange(sender, {.url = server.url(path)});
        const auto request = server.requests().back();
        const auto at = request.find("Cookie: ");
        return at == request.npos ? "none" : request.substr(at + 8, request.find('\r', at) - at - 8);
    };
    EXPECT_EQ(seenBy(*session, "/first"), "none");
    EXPECT_EQ(seenBy(*session, "/first"), "first=42");
    EXPECT_EQ(seenBy(*sessionFor(server), "/first"), "none") << "in another session";

    test::Answers late;
    session->dataTask({.url = server.url("/late")}, late.completion());
    ASSERT_TRUE(test::eventually([&] { return server.requests().back().contains("/late"); }));
    EXPECT_TRUE(server.requests().back().contains("first=42"));
    session->forgetCookies();
    EXPECT_EQ(seenBy(*session, "/second"), "none");
    mayAnswer.release();
    EXPECT_EQ(summary(late.wait().at(0).outcome), "200 ");
    EXPECT_EQ(seenBy(*session, "/second"), "second=42") << "what an earlier request still receives is forgotten, too";
}

TEST(CurlUrlSession, TakesTheShortestTimeLimit) {
    TestTlsServer server{[](const auto&) { return TestReply{"", After::hold}; }};

    const struct {
        std::chrono::milliseconds request, sessionRequest, resource;
    } rows[] = {{150ms, 60s, 60s}, {60s, 150ms, 60s}, {60s, 60s, 150ms}, {0ms, 60s, 60s}};

    for (const auto& row : rows) {
        const auto session =
            sessionFor(server, {.requestTimeout = row.sessionRequest, .resourceTimeout = row.resource});
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(summary(exchange(*session, {.url = server.url(), .timeout = row.request})), "timedOut");
        EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    }
    const auto session = sessionFor(server, {.idleTimeout = 1s});
    const auto outcome = exchange(*session, {.url = server.url()});
    EXPECT_EQ(summary(outcome), "timedOut");
    EXPECT_THAT(outcome.error().text, HasSubstr("stood still"));
}

} // namespace
} // namespace kivo::platform
