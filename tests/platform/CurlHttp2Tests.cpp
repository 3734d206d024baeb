#include "platform/curl/CurlServers.hpp"
#include "support/Answers.hpp"
#include "support/CurlSessions.hpp"
#include "support/Http2Frames.hpp"

#include <gtest/gtest.h>

#include <latch>

/// Requests that share an HTTP/2 connection.
namespace kivo::platform {
namespace {

using namespace test;
using namespace std::chrono_literals;
using After = TestReply::After;
using Protocol = TestTlsServer::Protocol;
using enum http2::Type;

/// The stream of the request that comes as the `count`th over its connection.
std::uint32_t streamOf(int count) {
    return static_cast<std::uint32_t>(2 * count - 1);
}

TEST(CurlHttp2, SendsManyRequestsOverOneConnection) {
    constexpr int atOnce = 6;
    constexpr std::size_t many = 40;
    std::atomic<int> count = 0;
    // The first answer comes when six requests are under way.
    const auto hold = [&](const auto&) {
        TestReply reply{++count > atOnce ? http2::answer() : ""};
        for (int i = 1; count == atOnce && i <= atOnce; ++i) {
            reply.bytes += http2::onStream(http2::answer(), streamOf(i));
        }
        return reply;
    };
    TestTlsServer server{hold, Protocol::http2};
    const auto session = sharingSession(server);
    Answers answers;
    for (std::size_t i = 0; i < many; ++i) {
        session->dataTask({.url = server.url(), .method = "POST", .body = "upload"}, answers.completion());
    }
    const auto entries = answers.wait(many);
    ASSERT_EQ(entries.size(), many);
    for (const auto& entry : entries) {
        EXPECT_EQ(summary(entry.outcome), "200 a") << (entry.outcome ? "" : entry.outcome.error().text);
    }
    EXPECT_EQ(server.requests().size(), many);
    EXPECT_EQ(server.connections(), 1);
}

TEST(CurlHttp2, LeavesSixConnectionsToAServerWithoutIt) {
    constexpr std::ptrdiff_t atOnce = 6;
    constexpr std::size_t many = 12;
    std::latch all{atOnce};
    std::atomic<int> count = 0;
    TestTlsServer server{[&](const auto&) {
        if (++count <= atOnce) {
            all.arrive_and_wait();
        }
        return reply(200);
    }};
    const auto session = sharingSession(server);
    Answers answers;
    for (std::size_t i = 0; i < many; ++i) {
        session->dataTask({.url = server.url()}, answers.completion());
    }
    EXPECT_EQ(answers.wait(many).size(), many);
    EXPECT_EQ(server.requests().size(), many);
    EXPECT_EQ(server.connections(), atOnce);
}

TEST(CurlHttp2, FailsWhatAFaultHitsOnceAndNothingElse) {
    const auto begin = http2::head() + http2::frame(data, 0, "ab");
    std::string tooMuch = http2::head();
    while (tooMuch.size() < shortAnswers + 16'000) {
        tooMuch += http2::frame(data, 0, std::string(16'000, 'x'));
    }
    const auto goAwayAfter = [](std::uint32_t stream) {
        return http2::frame(goAway, 0, http2::number(stream) + http2::number(0), true);
    };
    constexpr auto lost = "connectionLost";

    const struct {
        /// What the server says of the first of three requests that share a connection.
        std::string first;
        /// Whether the two others are answered in the same breath.
        bool answersOthers;
        After after;
        std::vector<std::string> seen;
        int connections;
    } rows[] = {
        {begin + http2::resetWith(2), true, After::keepOpen, {lost, "200 b", "200 c"}, 1},
        {http2::resetWith(0), true, After::keepOpen, {lost, "200 b", "200 c"}, 1},
        {tooMuch, true, After::keepOpen, {"answerTooLarge", "200 b", "200 c"}, 1},
        {http2::resetWith(7), true, After::keepOpen, {lost, "200 b", "200 c"}, 2},
        {http2::resetWith(13), true, After::keepOpen, {lost, "200 b", "200 c"}, 2},
        {goAwayAfter(streamOf(2)) + http2::answer(), false, After::keepOpen, {"200 a", lost, lost}, 2},
        {http2::answer(), false, After::close, {"200 a", lost, lost}, 2},
        {http2::answer(), false, After::cut, {"200 a", lost, lost}, 2},
        {begin, false, After::reset, {lost, lost, lost}, 2},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        std::atomic<int> count = 0;
        const auto serve = [&](const auto&) {
            ++count;
            if (count != 4) {
                return TestReply{count == 2 || count == 3 ? "" : http2::answer()};
            }
            const auto others =
                http2::onStream(http2::answer("b"), streamOf(3)) + http2::onStream(http2::answer("c"), streamOf(4));
            return TestReply{http2::onStream(row.first, streamOf(2)) + (row.answersOthers ? others : ""), row.after};
        };
        TestTlsServer server{serve, Protocol::http2};
        const auto session = sharingSession(server);
        ASSERT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
        std::vector<Answers> answers(3);
        for (auto& one : answers) {
            session->dataTask({.url = server.url(), .timeout = 5s}, one.completion());
        }
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const auto entries = answers[i].wait();
            ASSERT_EQ(entries.size(), 1U);
            EXPECT_EQ(summary(entries.front().outcome), row.seen[i]) << i;
        }
        EXPECT_EQ(server.requests().size(), 4U);
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
        EXPECT_EQ(server.requests().size(), 5U);
        EXPECT_EQ(server.connections(), row.connections);
    }
}

TEST(CurlHttp2, GivesUpOneOfManyRequestsAlone) {
    const std::string rows[] = {"", http2::head(), http2::head("6") + http2::frame(data, 0, "ab")};
    for (const auto& begun : rows) {
        SCOPED_TRACE(&begun - rows);
        std::atomic<int> count = 0;
        const auto serve = [&](const auto&) {
            switch (++count) {
            case 2:
                return TestReply{begun};
            case 3:
            case 4:
                return TestReply{""};
            case 5:
                // The request that was given up is answered all the same, between the others.
                return TestReply{http2::onStream(http2::answer("b"), streamOf(3)) +
                                 http2::onStream(http2::answer("late"), streamOf(2)) +
                                 http2::onStream(http2::answer("c"), streamOf(4)) + http2::answer("d")};
            default:
                return TestReply{http2::answer()};
            }
        };
        TestTlsServer server{serve, Protocol::http2};
        const auto session = sharingSession(server);
        ASSERT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
        std::vector<Answers> answers(4);
        const auto givenUp = session->dataTask({.url = server.url()}, answers[0].completion());
        session->dataTask({.url = server.url()}, answers[1].completion());
        session->dataTask({.url = server.url()}, answers[2].completion());
        ASSERT_TRUE(eventually([&] { return server.requests().size() == 4; }));
        givenUp->cancel();
        ASSERT_EQ(answers[0].wait().size(), 1U);
        EXPECT_TRUE(answers[1].seen().empty());
        session->dataTask({.url = server.url()}, answers[3].completion());
        const std::string seen[] = {"cancelled", "200 b", "200 c", "200 d"};
        for (std::size_t i = 0; i < answers.size(); ++i) {
            const auto entries = answers[i].wait();
            ASSERT_EQ(entries.size(), 1U) << i;
            EXPECT_EQ(summary(entries.front().outcome), seen[i]);
        }
        EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
        EXPECT_EQ(server.connections(), 1);
    }
}

/// Leaves the first three questions about a server open and answers yes to all others.
struct SlowJudge final : UrlSessionDelegate {
    void didReceiveChallenge(const ServerTrust*, std::function<void(AuthChallengeDisposition)> answer) override {
        if (++questions <= 3) {
            open.push_back(std::move(answer));
        } else {
            answer(AuthChallengeDisposition::useCredential);
        }
    }

    bool judgesServerTrust() const override { return true; }

    void didSendBodyData(const std::shared_ptr<UrlSessionTask>&, std::uint64_t, std::uint64_t) override {}

    std::vector<std::function<void(AuthChallengeDisposition)>> open;
    std::atomic<int> questions = 0;
};

TEST(CurlHttp2, GoesPastRequestsWhoseServerIsStillJudged) {
    TestTlsServer server{[](const auto&) { return TestReply{http2::answer()}; }, Protocol::http2};
    const auto judge = std::make_shared<SlowJudge>();
    const auto session = makeCurlUrlSessions("/nonexistent")->make({.responseLimit = shortAnswers}, judge);
    std::vector<Answers> judged(3);
    std::vector<std::shared_ptr<UrlSessionTask>> tasks;
    for (auto& one : judged) {
        // Only the time of the last ends before its server is judged.
        const auto timeout = tasks.size() == 2 ? 1s : 60s;
        tasks.push_back(session->dataTask({.url = server.url(), .timeout = timeout}, one.completion()));
        ASSERT_TRUE(eventually([&] { return judge->questions == std::ssize(tasks); }));
    }
    EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
    EXPECT_TRUE(judged[0].seen().empty());
    judge->open[0](AuthChallengeDisposition::useCredential);
    tasks[1]->cancel();
    const std::string seen[] = {"200 a", "cancelled", "timedOut"};
    for (std::size_t i = 0; i < judged.size(); ++i) {
        const auto entries = judged[i].wait();
        ASSERT_EQ(entries.size(), 1U) << i;
        EXPECT_EQ(summary(entries.front().outcome), seen[i]);
    }
    judge->open[1](AuthChallengeDisposition::useCredential);
    EXPECT_EQ(summary(exchange(*session, {.url = server.url()})), "200 a");
    EXPECT_EQ(server.requests().size(), 3U);
}

struct CurlServerRoom : testing::Test {
    /// Begins as many requests as there is room for, and tells how many.
    std::ptrdiff_t fill(CurlServer::Time now) {
        const auto before = std::ssize(exchanges);
        while (server.hasRoom(now)) {
            server.begin(now);
            exchanges.push_back(std::make_unique<char>());
        }
        return std::ssize(exchanges) - before;
    }

    const void* exchange(std::size_t index) const { return exchanges[index].get(); }

    const CurlServer::Time start{};
    CurlServer server{true};
    std::vector<std::unique_ptr<char>> exchanges;
};

TEST_F(CurlServerRoom, GrowsWithTheAnswersOverHttp2) {
    EXPECT_EQ(fill(start), 1) << "until the server has shown its protocol";
    server.send(exchange(0), true);
    EXPECT_EQ(fill(start), CurlServer::mostAlone - 1);
    for (std::size_t ended = 0; ended < 100; ++ended) {
        server.send(exchange(ended + 1), true);
        server.end(exchange(ended), true, true);
        EXPECT_EQ(fill(start), ended < CurlServer::mostShared - CurlServer::mostAlone ? 2 : 1) << ended;
    }
    EXPECT_TRUE(server.mayConnect(exchange(101), start)) << "the server allows no further stream";
    EXPECT_FALSE(server.mayConnect(exchange(102), start));
    EXPECT_TRUE(server.mayConnect(exchange(102), start + CurlServer::patience));
    server.end(exchange(103), false, false);
    EXPECT_FALSE(server.hasRoom(start)) << "while a request makes a connection";
    server.send(exchange(101), true);
    EXPECT_FALSE(server.hasRoom(start)) << "beyond the streams that the server allows";
}

TEST_F(CurlServerRoom, IsThatOfSixConnectionsOverHttp1AndAfterASlowStart) {
    EXPECT_EQ(fill(start), 1);
    const auto late = start + CurlServer::patience;
    EXPECT_EQ(server.nextRoom(start), late);
    EXPECT_EQ(fill(late), CurlServer::mostAlone - 1);
    EXPECT_EQ(server.nextRoom(late), CurlServer::Time::max());
    server.send(exchange(0), false);
    server.end(exchange(0), true, true);
    EXPECT_EQ(fill(start), 1);
    CurlServer alone{false};
    alone.begin(start);
    EXPECT_TRUE(alone.hasRoom(start)) << "where requests share no connections";
}

} // namespace
} // namespace kivo::platform
