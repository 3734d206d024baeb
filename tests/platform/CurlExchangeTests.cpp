#include "support/Answers.hpp"
#include "support/CurlSessions.hpp"
#include "support/Http2Frames.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <span>

/// Answers that are cut, garbled or too long, and how often a request leaves when none comes.
namespace kivo::platform {
namespace {

using namespace test;
using After = TestReply::After;
using Protocol = TestTlsServer::Protocol;

const std::string head = "HTTP/1.1 200 OK\r\n";

/// What a server does with a request, and what its session makes of that.
struct Row {
    std::string bytes;
    std::string seen;
    After after = After::close;
    std::uint64_t filler = 0;
};

/// Sends a request for each row.
void expectSeen(std::span<const Row> rows, Protocol protocol = Protocol::tls,
                const UrlSessionConfiguration& configuration = {}) {
    std::atomic<const Row*> played = nullptr;
    TestTlsServer server{[&](const auto&) {
                             const Row& row = *played.load();
                             return TestReply{row.bytes, row.after, row.filler};
                         },
                         protocol};
    const auto session = sessionFor(server, configuration);
    for (const Row& row : rows) {
        played = &row;
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), row.seen)
            << testing::PrintToString(row.bytes.substr(0, 60));
    }
    EXPECT_EQ(server.requests().size(), rows.size()) << "and no redirect is followed of which a part was missing";
}

TEST(CurlAnswer, CountsOnlyWhenItCameAsAWhole) {
    const Row rows[] = {
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
    expectSeen(rows);
}

TEST(CurlAnswer, CountsOnHttp2WhenItsStreamCameToItsEnd) {
    using enum http2::Type;
    const auto abc = http2::frame(data, 0, "abc");
    const auto end = http2::frame(data, http2::endStream, "def");
    const auto open = After::keepOpen;
    const Row rows[] = {
        {http2::head() + abc + end, "200 abcdef?", open},
        {http2::head("6") + abc + end, "200 abcdef", open},
        {http2::head("6") + abc + http2::resetWith(0), "connectionLost", open},
        {http2::head() + abc + http2::resetWith(2), "connectionLost", open},
        {http2::head() + abc + http2::resetWith(8), "connectionLost", open},
        {http2::resetWith(0), "connectionLost", open},
        {http2::head() + abc, "connectionLost"},
        {http2::head() + abc, "connectionLost", After::reset},
        {http2::head("99999999999999999999") + abc + end, "connectionLost", open},
    };
    expectSeen(rows, Protocol::http2);
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
    const auto hold = After::hold;
    const Row rows[] = {
        {head + "Content-Length: " + std::to_string(huge) + "\r\n\r\n", "answerTooLarge", After::close, huge},
        {chunks + "ffffff\r\n", "answerTooLarge", After::close, huge},
        {head + manyLines, "answerTooLarge", hold},
        {interim, "answerTooLarge", hold},
        {chunks + "0\r\n" + manyLines, "answerTooLarge", hold},
        {head + "X-A: ", "answerTooLarge", After::close, huge},
        {chunks + "0\r\nX-A: ", "badAnswer", After::close, huge},
    };
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    expectSeen(rows, Protocol::tls, {.responseLimit = 1000, .headLimit = headLimit});
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 40'000) << "kilobytes of memory at its peak";
}

UrlRequest upload(const TestTlsServer& server) {
    return {.url = server.url(), .method = "POST", .body = "upload"};
}

TEST(CurlSending, SendsNothingTwiceWhenAUsedConnectionEndsWithoutAnAnswer) {
    using enum http2::Type;
    constexpr std::uint32_t refusedStream = 7;
    constexpr std::uint32_t http1Required = 13;
    const auto goodbye = http2::frame(goAway, 0, http2::number(0) + http2::number(0), true);

    const struct {
        Protocol protocol;
        TestReply last;
        std::string seen = "connectionLost";
    } rows[] = {
        {Protocol::tls, {"", After::reset}},
        {Protocol::tls, {"", After::close}},
        {Protocol::tls, {"", After::cut}},
        {Protocol::http2, {"", After::reset}},
        {Protocol::http2, {"", After::close}},
        {Protocol::http2, {http2::resetWith(refusedStream)}},
        {Protocol::http2, {http2::resetWith(http1Required)}},
        {Protocol::http2, {goodbye, After::close}, "connectionLost"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        std::atomic<int> count = 0;
        const TestReply usual = row.protocol == Protocol::http2 ? TestReply{http2::answer("")} : reply(200);
        TestTlsServer server{[&](const auto&) { return ++count == 1 ? usual : row.last; }, row.protocol};
        const auto session = sessionFor(server);
        ASSERT_EQ(summary(exchange(*session, upload(server))), "200 ");
        EXPECT_EQ(summary(exchange(*session, upload(server))), row.seen);
        EXPECT_EQ(server.requests().size(), 2U);
        EXPECT_EQ(server.handshakes(), 1);
    }
}

TEST(CurlSending, SendsEachOfManyOnce) {
    constexpr std::size_t many = 6;
    std::latch all{many};
    std::atomic<bool> isEnding = false;
    TestTlsServer server{[&](const auto&) {
        if (isEnding) {
            return TestReply{"", After::reset};
        }
        all.arrive_and_wait();
        return reply(200);
    }};
    const auto session = sessionFor(server);
    Answers answers;
    for (std::size_t i = 0; i < many; ++i) {
        session->dataTask(upload(server), answers.completion());
    }
    ASSERT_EQ(answers.wait(many).size(), many);
    isEnding = true;
    for (std::size_t i = 0; i < many; ++i) {
        session->dataTask(upload(server), answers.completion());
    }
    const auto entries = answers.wait(2 * many);
    ASSERT_EQ(entries.size(), 2 * many);
    EXPECT_EQ(std::ranges::count_if(entries, [](const auto& entry) { return !entry.outcome; }), many);
    EXPECT_EQ(server.requests().size(), 2 * many);
}

TEST(CurlSending, TakesAFreshConnectionWhereTheServerHasEndedTheIdleOne) {
    const struct {
        Protocol protocol;
        TestReply reply;
    } rows[] = {
        {Protocol::tls, {reply(200).bytes, After::close}},  {Protocol::tls, {reply(200).bytes, After::cut}},
        {Protocol::tls, {reply(200).bytes, After::reset}},  {Protocol::http2, {http2::answer(""), After::close}},
        {Protocol::http2, {http2::answer(""), After::cut}},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        // As many idle connections as there can be, all of them at their end.
        const int many = row.protocol == Protocol::http2 ? 1 : 6;
        std::latch all{many};
        std::atomic<int> count = 0;
        TestTlsServer server{[&](const auto&) {
                                 if (++count <= many) {
                                     all.arrive_and_wait();
                                 }
                                 return TestReply{row.reply.bytes, count <= many ? row.reply.after : After::keepOpen};
                             },
                             row.protocol};
        const auto session = sessionFor(server);
        Answers answers;
        for (int i = 0; i < many; ++i) {
            session->dataTask(upload(server), answers.completion());
        }
        ASSERT_EQ(answers.wait(static_cast<std::size_t>(many)).size(), static_cast<std::size_t>(many));
        ASSERT_TRUE(eventually([&] { return server.ended() == many; }));
        EXPECT_EQ(summary(exchange(*session, upload(server))), "200 ");
        EXPECT_EQ(server.requests().size(), static_cast<std::size_t>(many) + 1);
    }
}

} // namespace
} // namespace kivo::platform
