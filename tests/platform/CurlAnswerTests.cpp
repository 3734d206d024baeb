#include "platform/curl/CurlUrlSession.hpp"
#include "support/Answers.hpp"
#include "support/Http2Frames.hpp"
#include "support/TestTlsServer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

/// Answers that are cut, garbled or too long.
namespace kivo::platform {
namespace {

using namespace test;
using After = TestReply::After;

const std::string head = "HTTP/1.1 200 OK\r\n";

TEST(CurlAnswer, CountsOnlyWhenItCameAsAWhole) {
    const struct {
        std::string bytes;
        std::string seen;
        After after = After::close;
    } rows[] = {
        {head + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\nX-Late: 1\r\n\r\n", "200 abc"},
        {"HTTP/1.1 102 Wait\r\nX-Early: 1\r\n\r\n" + reply(201, "made").bytes, "201 made"},
        {head + "Transfer-Encoding: chunked\r\n\r\nzz\r\n", "badAnswer", After::hold},
        {"garbage instead of http\r\n\r\n", "badAnswer"},
        {head + "Content-Le", "connectionLost"},
        {head + "Content-Length: 0\r\n", "connectionLost"},
        {"HTTP/1.1 307 See there\r\nContent-Length: 0\r\nLocation: /\r\n", "connectionLost"},
        {"HTTP/1.1 102 Wait\r\n\r\n", "connectionLost"},
        {head + "Content-Length: 10\r\n\r\nabc", "connectionLost"},
        {head + "Content-Length: 10\r\n\r\nabc", "connectionLost", After::reset},
        {head + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n", "connectionLost"},
        {head + "Transfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\nX-Late: 1\r\n", "connectionLost"},
        {head + "\r\nabc", "badAnswer"},
        {head + "\r\nabc", "badAnswer", After::cut},
        {"HTTP/1.0 200 OK\r\n\r\nabc", "badAnswer", After::cut},
        {head + "Transfer-Encoding: identity\r\n\r\nabc", "badAnswer"},
        {head + "Content-Length: 3\r\nContent-Length: 10\r\n\r\nabc", "badAnswer"},
        {head + "Content-Length: -3\r\n\r\nabc", "badAnswer"},
        {head + "Content-Length: 3x\r\n\r\nabc", "badAnswer"},
        {head + "Content-Length: 99999999999999999999\r\n\r\nabc", "answerTooLarge"},
        {head + "Content-Length: 18446744073709551619\r\n\r\nabc", "answerTooLarge"},
    };

    std::size_t row = 0;
    TestTlsServer server{[&](const auto&) { return TestReply{rows[row].bytes, rows[row].after}; }};
    const auto session = makeCurlUrlSessions(server.certificateFile())->make({});
    for (; row < std::size(rows); ++row) {
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), rows[row].seen) << rows[row].bytes;
    }
    EXPECT_EQ(server.requests().size(), std::size(rows)) << "and no redirect is followed of which a part was missing";
}

TEST(CurlAnswer, CountsOnHttp2WhenItsStreamCameToItsEnd) {
    using enum http2::Type;
    const auto abc = http2::frame(data, 0, "abc");
    const auto end = http2::frame(data, http2::endStream, "def");
    const auto resetWith = [](std::uint32_t code) { return http2::frame(resetStream, 0, http2::number(code)); };

    const struct {
        std::string bytes;
        std::string seen;
        After after = After::keepOpen;
    } rows[] = {
        {http2::head() + abc + end, "200 abcdef?"},
        {http2::head("6") + abc + end, "200 abcdef"},
        {http2::head("6") + abc + resetWith(0), "connectionLost"},
        {http2::head() + abc + resetWith(2), "connectionLost"},
        {http2::head() + abc + resetWith(8), "connectionLost"},
        {resetWith(0), "connectionLost"},
        {http2::head() + abc, "connectionLost", After::close},
        {http2::head() + abc, "connectionLost", After::reset},
        {http2::head("99999999999999999999") + abc + end, "connectionLost"},
    };

    std::size_t row = 0;
    TestTlsServer server{[&](const auto&) { return TestReply{rows[row].bytes, rows[row].after}; },
                         TestTlsServer::Protocol::http2};
    for (; row < std::size(rows); ++row) {
        const auto session = makeCurlUrlSessions(server.certificateFile())->make({});
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), rows[row].seen) << row;
    }
    EXPECT_EQ(server.requests().size(), std::size(rows));
}

TEST(CurlAnswer, IsBoundedInHeadTrailersAndBody) {
    constexpr std::uint64_t huge = std::uint64_t{100} * 1024 * 1024;
    constexpr std::size_t headLimit = 4096;
    std::string manyLines;
    while (manyLines.size() < headLimit) {
        manyLines += "X-A: 1\r\n";
    }
    std::string interim;
    while (interim.size() < headLimit) {
        interim += "HTTP/1.1 103 Hints\r\nX-A: 1\r\n\r\n";
    }
    const auto chunks = head + "Transfer-Encoding: chunked\r\n\r\n";

    const struct {
        std::string bytes;
        std::uint64_t filler;
        std::string seen;
    } rows[] = {
        {head + "Content-Length: " + std::to_string(huge) + "\r\n\r\n", huge, "answerTooLarge"},
        {chunks + "ffffff\r\n", huge, "answerTooLarge"},
        {head + manyLines, 0, "answerTooLarge"},
        {interim, 0, "answerTooLarge"},
        {chunks + "0\r\n" + manyLines, 0, "answerTooLarge"},
        {head + "X-A: ", huge, "answerTooLarge"},
        {chunks + "0\r\nX-A: ", huge, "badAnswer"},
    };

    std::size_t row = 0;
    TestTlsServer server{[&](const auto&) {
        return TestReply{rows[row].bytes, rows[row].filler == 0 ? After::hold : After::close, rows[row].filler};
    }};
    const auto session =
        makeCurlUrlSessions(server.certificateFile())->make({.responseLimit = 1000, .headLimit = headLimit});
    exchange(*session, {.url = server.url()});
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    for (; row < std::size(rows); ++row) {
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), rows[row].seen) << rows[row].bytes.substr(0, 60);
    }
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 40'000) << "kilobytes of memory at its peak";
}

} // namespace
} // namespace kivo::platform
