#include "support/Answers.hpp"
#include "support/CurlSessions.hpp"
#include "support/Http2Frames.hpp"
#include "support/OwnNetwork.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

/// Servers and networks that would hold up a session for longer than a request may take.
namespace kivo::platform {
namespace {

using namespace test;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using After = TestReply::After;
using Protocol = TestTlsServer::Protocol;
using enum http2::Type;

/// As many copies of a frame as fill a TLS record.
std::string recordOf(const std::string& frame) {
    std::string record;
    while (record.size() + frame.size() <= 16'000) {
        record += frame;
    }
    return record;
}

TEST(CurlTurns, EndAConnectionWhoseServerSendsNothingButBusywork) {
    constexpr std::uint8_t acknowledged = 1;
    constexpr auto unknownType = static_cast<http2::Type>(0xfa);
    const auto flooded = [](const std::string& frame) {
        return TestReply{.bytes = http2::head(), .flood = recordOf(frame)};
    };

    const struct {
        TestReply reply;
        Protocol protocol = Protocol::http2;
    } rows[] = {
        {flooded(http2::frame(data, 0, ""))},
        {flooded(http2::frame(windowUpdate, 0, http2::number(1), true))},
        {flooded(http2::frame(ping, acknowledged, "12345678", true))},
        {flooded(http2::frame(unknownType, 0, "", true))},
        {{"", After::renewKeys}, Protocol::tls},
    };

    const auto certificate = simulator::CertificateAuthority{}.issue(
        {.names = {"localhost"}, .keyType = simulator::KeyType::ec256, .flaw = simulator::CertificateFlaw::selfSigned});
    TestTlsServer other{[](const auto&) { return reply(200, "other"); }, Protocol::tls, certificate};
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        const auto usual = row.protocol == Protocol::http2 ? TestReply{http2::answer()} : reply(200, "a");
        std::atomic<int> count = 0;
        TestTlsServer server{[&](const auto&) { return ++count == 1 ? row.reply : usual; }, row.protocol, certificate};
        const auto session = sharingSession(server);
        Answers answers;
        session->dataTask({.url = server.url(), .timeout = 2s}, answers.completion());
        ASSERT_TRUE(eventually([&] { return server.requests().size() == 1; }));
        const auto start = Clock::now();
        EXPECT_EQ(summary(exchange(*session, {.url = other.url()})), "200 other");
        const auto entries = answers.wait();
        EXPECT_LT(Clock::now() - start, 8s);
        ASSERT_EQ(entries.size(), 1U);
        // Where the server is too slow to keep the turn going, the request's own time ends the request.
        EXPECT_THAT(summary(entries.front().outcome), testing::AnyOf("connectionLost", "timedOut"));
        EXPECT_TRUE(eventually([&] {
            return summary(exchange(*session, {.url = server.url(), .timeout = 2s})) == "200 a";
        })) << "over another connection";
    }
}

std::chrono::microseconds processorTime() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto in = [](const timeval& time) {
        return std::chrono::seconds{time.tv_sec} + std::chrono::microseconds{time.tv_usec};
    };
    return in(usage.ru_utime) + in(usage.ru_stime);
}

TEST(CurlTurns, RestWhileTheServerAllowsNoByteOfABody) {
    constexpr std::size_t moreThanAWindow = 200'000;
    // The request that comes third allows the second the rest of its body.
    const auto allow = http2::number(static_cast<std::uint32_t>(2 * moreThanAWindow));
    const auto windows =
        http2::frame(windowUpdate, 0, allow, true) + http2::onStream(http2::frame(windowUpdate, 0, allow), 3);
    TestTlsServer server{[&](const std::string& request) {
                             return TestReply{(request.size() < moreThanAWindow ? windows : "") + http2::answer()};
                         },
                         Protocol::http2};
    const auto session = sharingSession(server);
    const UrlRequest upload{
        .url = server.url(), .method = "POST", .body = std::string(moreThanAWindow, 'x'), .timeout = 1s};
    const auto before = processorTime();
    EXPECT_EQ(summary(exchange(*session, upload)), "timedOut");
    EXPECT_LT(processorTime() - before, 500ms);

    Answers answers;
    auto longer = upload;
    longer.timeout = 60s;
    session->dataTask(longer, answers.completion());
    EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
    ASSERT_EQ(answers.wait().size(), 1U);
    EXPECT_EQ(summary(answers.seen().front().outcome), "200 a");
    EXPECT_EQ(server.connections(), 1);
}

struct CurlNetwork : OwnNetwork {};

TEST_F(CurlNetwork, LosesOneRequestOverAConnectionThatHasDied) {
    TestTlsServer server{[](const auto&) { return TestReply{http2::answer()}; }, Protocol::http2};
    const auto session = sharingSession(server);
    const UrlRequest request{.url = server.url(), .timeout = 4s};
    ASSERT_EQ(summary(exchange(*session, request)), "200 a");
    ip("link set lo down");
    EXPECT_EQ(summary(exchange(*session, request)), "connectionLost");
    ip("link set lo up");
    EXPECT_EQ(summary(exchange(*session, request)), "200 a");
    EXPECT_EQ(server.connections(), 2);
}

} // namespace
} // namespace kivo::platform
