#include "platform/curl/CurlUrlSession.hpp"
#include "support/Answers.hpp"
#include "support/TestTlsServer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using test::Answers;
using test::eventually;
using test::exchange;
using test::reply;
using test::summary;
using test::TestReply;
using test::TestTlsServer;

constexpr std::size_t requestsPerServer = 6;

// A session with as many requests under way as the server may have, each of which the server holds.
class CurlUrlSessionWaiting : public testing::Test {
protected:
    void SetUp() override {
        for (std::size_t i = 0; i < requestsPerServer; ++i) {
            held.push_back(session->dataTask({.url = server.url("/held")}, held_.completion()));
        }
        ASSERT_TRUE(eventually([&] { return server.requests().size() == requestsPerServer; }));
    }

    bool hasSeen(const std::string& path) const {
        return std::ranges::any_of(server.requests(), [&](const auto& line) { return line.contains(path); });
    }

    static TestReply holdOrAnswer(const std::string& request) {
        return request.contains("/held") ? TestReply{"", TestReply::After::hold} : reply(200);
    }

    TestTlsServer server{holdOrAnswer};
    std::shared_ptr<UrlSession> session = makeCurlUrlSessions(server.certificateFile())->make({});
    std::vector<std::shared_ptr<UrlSessionTask>> held;
    Answers answers;

private:
    Answers held_;
};

TEST_F(CurlUrlSessionWaiting, GoesInTurnWhenAnotherEnds) {
    session->dataTask({.url = server.url("/first")}, answers.completion("first"));
    session->dataTask({.url = server.url("/second")}, answers.completion("second"));
    const auto elsewhere = "https://127.0.0.1:" + std::to_string(server.port()) + "/elsewhere";
    EXPECT_EQ(summary(exchange(*session, {.url = elsewhere})), "serverCertificateUntrusted")
        << "another host's turn is its own";
    EXPECT_FALSE(hasSeen("/first"));

    held.front()->cancel();
    const auto entries = answers.wait(2);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].tag + " " + summary(entries[0].outcome), "first 200 ");
    EXPECT_EQ(entries[1].tag + " " + summary(entries[1].outcome), "second 200 ");
}

TEST_F(CurlUrlSessionWaiting, EndsUnsentWhenItsTimeIsUpOrItIsCancelled) {
    const UrlRequest impatient{.url = server.url("/impatient"), .timeout = 150ms};
    EXPECT_EQ(summary(exchange(*session, {.url = server.url(), .method = ""})), "unknown") << "need not wait";
    session->dataTask(impatient, answers.completion());
    const auto overdue = answers.wait(1);
    ASSERT_EQ(overdue.size(), 1U);
    ASSERT_EQ(summary(overdue[0].outcome), "timedOut");
    EXPECT_THAT(overdue[0].outcome.error().text, testing::HasSubstr("took longer than 150 ms"));

    session->dataTask({.url = server.url("/unwanted")}, answers.completion())->cancel();
    answers.wait(2);
    session->dataTask({.url = server.url("/abandoned")}, answers.completion());
    session.reset();
    const auto ended = answers.wait(3);
    ASSERT_EQ(ended.size(), 3U);
    EXPECT_EQ(summary(ended[1].outcome), "cancelled");
    EXPECT_EQ(summary(ended[2].outcome), "cancelled");
    EXPECT_EQ(server.requests().size(), requestsPerServer);
}

} // namespace
} // namespace kivo::platform
