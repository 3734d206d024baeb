#include "platform/curl/CurlUrlSession.hpp"
#include "support/Answers.hpp"
#include "support/Http2Frames.hpp"
#include "support/TestTlsServer.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>

/// How often a request leaves.
namespace kivo::platform {
namespace {

using namespace test;
using After = TestReply::After;
using Protocol = TestTlsServer::Protocol;

std::string http2Answer() {
    return http2::head("0") + http2::frame(http2::Type::data, http2::endStream, "");
}

std::shared_ptr<UrlSession> sessionFor(const TestTlsServer& server) {
    return makeCurlUrlSessions(server.certificateFile())->make({});
}

UrlRequest upload(const TestTlsServer& server) {
    return {.url = server.url(), .method = "POST", .body = "upload"};
}

TEST(CurlSending, SendsNothingTwiceWhenAUsedConnectionEndsWithoutAnAnswer) {
    using enum http2::Type;
    const auto resetWith = [](std::uint32_t code) { return http2::frame(resetStream, 0, http2::number(code)); };
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
        {Protocol::http2, {resetWith(refusedStream)}},
        {Protocol::http2, {resetWith(http1Required)}},
        {Protocol::http2, {goodbye, After::close}, "connectionLost"},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        std::atomic<int> count = 0;
        const TestReply usual = row.protocol == Protocol::http2 ? TestReply{http2Answer()} : reply(200);
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
        {Protocol::tls, {reply(200).bytes, After::close}}, {Protocol::tls, {reply(200).bytes, After::cut}},
        {Protocol::tls, {reply(200).bytes, After::reset}}, {Protocol::http2, {http2Answer(), After::close}},
        {Protocol::http2, {http2Answer(), After::cut}},
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

TEST(CurlSending, KeepsConnectionsThatLive) {
    for (const auto protocol : {Protocol::tls, Protocol::http2}) {
        TestTlsServer server{
            [&](const auto&) { return protocol == Protocol::http2 ? TestReply{http2Answer()} : reply(200); }, protocol};
        const auto session = sessionFor(server);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(summary(exchange(*session, upload(server))), "200 ");
        }
        EXPECT_EQ(server.connections(), 1);
    }
}

} // namespace
} // namespace kivo::platform
