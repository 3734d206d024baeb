#include "platform/curl/CurlUrlSession.hpp"
#include "support/Answers.hpp"
#include "support/TestTlsServer.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <latch>

extern char** environ;

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

// Answers what ends in "quick" and holds everything else.
TestReply holdAllButQuick(const std::string& request) {
    return request.contains("/quick") ? reply(200) : TestReply{"", TestReply::After::hold};
}

std::shared_ptr<UrlSession> sessionFor(const TestTlsServer& server) {
    return makeCurlUrlSessions(server.certificateFile())->make({});
}

int sessionThreads() {
    int count = 0;
    std::error_code gone;
    for (const auto& thread : std::filesystem::directory_iterator{"/proc/self/task", gone}) {
        std::string name;
        std::getline(std::ifstream{thread.path() / "comm"}, name);
        count += name == "kivo-network" || name == "kivo-callbacks" ? 1 : 0;
    }
    return count;
}

bool isInternetSocket(int descriptor) {
    int domain = 0;
    socklen_t size = sizeof domain;
    return ::getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 &&
           (domain == AF_INET || domain == AF_INET6);
}

TEST(CurlUrlSessionTask, CanBeCancelledBeforeDuringAndAfterTheExchange) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    Answers answers;
    session->dataTask({.url = server.url()}, answers.completion("at once"))->cancel();
    EXPECT_EQ(summary(answers.wait(1).back().outcome), "cancelled");

    const auto held = session->dataTask({.url = server.url("/held")}, answers.completion());
    ASSERT_TRUE(eventually([&] { return !server.requests().empty() && server.requests().back().contains("/held"); }));
    held->cancel();
    held->cancel();
    EXPECT_EQ(summary(answers.wait(2).back().outcome), "cancelled");

    const auto done = session->dataTask({.url = server.url("/quick")}, answers.completion());
    EXPECT_EQ(summary(answers.wait(3).back().outcome), "200 ");
    done->cancel();
    EXPECT_EQ(summary(exchange(*session, {.url = server.url("/quick")})), "200 ");
    EXPECT_EQ(answers.seen().size(), 3U) << "no completion twice";
}

TEST(CurlUrlSessionTask, CanBeCancelledInACompletion) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    Answers answers;
    const auto held = session->dataTask({.url = server.url()}, answers.completion());
    session->dataTask({.url = server.url("/quick")}, [held](const auto&) { held->cancel(); });
    EXPECT_EQ(summary(answers.wait().at(0).outcome), "cancelled");
}

TEST(CurlUrlSessionTask, SucceedsNoMoreOnceCancelled) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    Answers answers;
    std::latch begun{1};
    std::latch blocked{1};
    session->dataTask({.url = server.url("/quick")}, [&](const auto&) {
        begun.count_down();
        blocked.wait();
    });
    begun.wait();
    const auto late = session->dataTask({.url = server.url("/quick")}, answers.completion());
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 2; }));
    late->cancel();
    blocked.count_down();
    EXPECT_EQ(summary(answers.wait().at(0).outcome), "cancelled");
}

TEST(CurlUrlSessionTask, RacesWithItsCancellationToOneCompletion) {
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

TEST(CurlUrlSession, CompletesOneAtATimeInOrderOnOneThread) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    Answers answers;
    std::atomic<int> inside{0};
    constexpr std::size_t count = 24;
    for (std::size_t i = 0; i < count; ++i) {
        session->dataTask({.url = server.url("/quick")},
                          [&, collect = answers.completion(std::to_string(i))](UrlOutcome outcome) {
                              EXPECT_EQ(++inside, 1);
                              std::this_thread::yield();
                              --inside;
                              collect(std::move(outcome));
                          });
    }
    const auto entries = answers.wait(count);
    ASSERT_EQ(entries.size(), count);
    for (const auto& entry : entries) {
        EXPECT_EQ(entry.thread, entries[0].thread);
        EXPECT_NE(entry.thread, std::this_thread::get_id());
        EXPECT_EQ(summary(entry.outcome), "200 ");
    }
}

TEST(CurlUrlSession, ReportsOnTheGivenQueueOnly) {
    struct HeldQueue final : DispatchQueue {
        void async(std::function<void()> block) override {
            const std::scoped_lock lock{mutex};
            blocks.push_back(std::move(block));
        }

        std::size_t size() {
            const std::scoped_lock lock{mutex};
            return blocks.size();
        }

        std::mutex mutex;
        std::vector<std::function<void()>> blocks;
    };

    TestTlsServer server{holdAllButQuick};
    const auto queue = std::make_shared<HeldQueue>();
    const auto session = makeCurlUrlSessions(server.certificateFile())->make({}, nullptr, queue);
    Answers answers;
    session->dataTask({.url = server.url("/quick")}, answers.completion());
    ASSERT_TRUE(eventually([&] { return queue->size() == 1; }));
    EXPECT_TRUE(answers.seen().empty());
    queue->blocks[0]();
    ASSERT_EQ(answers.seen().size(), 1U);
    EXPECT_EQ(answers.seen()[0].thread, std::this_thread::get_id());
}

TEST(CurlUrlSession, CancelsWhatIsUnderWayWhenItGoes) {
    TestTlsServer server{holdAllButQuick};
    auto session = sessionFor(server);
    Answers answers;
    std::vector<std::shared_ptr<UrlSessionTask>> tasks;
    for (int i = 0; i < 3; ++i) {
        tasks.push_back(session->dataTask({.url = server.url()}, answers.completion()));
    }
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 3; }));
    session->dataTask({.url = server.url()}, answers.completion("just handed over"));
    session.reset();
    const auto entries = answers.wait(4);
    ASSERT_EQ(entries.size(), 4U);
    for (const auto& entry : entries) {
        EXPECT_EQ(summary(entry.outcome), "cancelled");
    }
    EXPECT_TRUE(eventually([] { return sessionThreads() == 0; })) << "although tasks are still held";
    tasks.front()->cancel();
}

TEST(CurlUrlSession, CanGoInItsOwnCompletion) {
    TestTlsServer server{holdAllButQuick};
    Answers answers;
    {
        const auto owner = std::make_shared<std::shared_ptr<UrlSession>>(sessionFor(server));
        (*owner)->dataTask({.url = server.url()}, answers.completion("held"));
        (*owner)->dataTask({.url = server.url("/quick")}, [owner, collect = answers.completion("quick")](auto outcome) {
            owner->reset();
            collect(std::move(outcome));
        });
    }
    const auto entries = answers.wait(2);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].tag + " " + summary(entries[0].outcome), "quick 200 ");
    EXPECT_EQ(entries[1].tag + " " + summary(entries[1].outcome), "held cancelled");
    EXPECT_TRUE(eventually([] { return sessionThreads() == 0; }));
}

TEST(CurlUrlSession, KeepsItsConnectionsFromStartedPrograms) {
    TestTlsServer server{holdAllButQuick};
    const auto session = sessionFor(server);
    exchange(*session, {.url = server.url("/quick")});
    session->dataTask({.url = server.url()}, [](const auto&) {});
    ASSERT_TRUE(eventually([&] { return server.requests().size() == 2; }));
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        if (isInternetSocket(descriptor)) {
            EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        }
    }
}

struct ExitInFlight : testing::TestWithParam<const char*> {};

TEST_P(ExitInFlight, NeitherHangsNorCrashes) {
    TestTlsServer server{holdAllButQuick};
    const std::string program = KIVO_TEST_PROGRAMS "/ExitInFlight";
    const int rounds = GetParam() == std::string_view{"blocked-completion"} ? 2 : 20;
    for (int i = 0; i < rounds; ++i) {
        std::vector<std::string> words{program, GetParam(), server.url(), server.url("/quick"),
                                       server.certificateFile().string()};
        std::vector<char*> arguments;
        for (auto& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        const auto start = std::chrono::steady_clock::now();
        pid_t child = 0;
        ASSERT_EQ(::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(), environ), 0);
        int status = -1;
        ASSERT_TRUE(eventually([&] { return ::waitpid(child, &status, WNOHANG) == child; }));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
        // The exiting process waits two seconds at most; the rest is for a busy machine.
        EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
    }
}

INSTANTIATE_TEST_SUITE_P(CurlUrlSession, ExitInFlight,
                         testing::Values("return", "exit", "exit-in-completion", "blocked-completion"));

} // namespace
} // namespace kivo::platform
