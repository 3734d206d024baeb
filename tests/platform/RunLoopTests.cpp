#include <kivo/platform/RunLoop.hpp>

#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;

bool isReadable(const RunLoop& loop, int milliseconds = 0) {
    pollfd wanted{.fd = loop.fileDescriptor(), .events = POLLIN, .revents = 0};
    return poll(&wanted, 1, milliseconds) == 1;
}

TEST(RunLoop, RunsDelayedBlocksExactlyWhenTheyAreDue) {
    const auto clock = std::make_shared<ManualClock>();
    RunLoop loop{clock};
    std::string order;
    loop.asyncAfter(3s, [&] { order += 'c'; });
    loop.asyncAfter(1s, [&] { order += 'a'; });
    loop.asyncAfter(1s, [&] { order += 'b'; });
    loop.asyncAfter(-1s, [&] { order += '0'; });
    clock->advance(1ns);
    loop.asyncAfter(std::chrono::nanoseconds::max(), [&] { order += '!'; });
    loop.drain();
    EXPECT_EQ(order, "0");
    clock->advance(1s - 2ns);
    EXPECT_EQ(loop.drain(), 0U);
    clock->advance(1ns);
    EXPECT_EQ(loop.drain(), 2U);
    EXPECT_EQ(order, "0ab");
    clock->advance(10s);
    loop.drain();
    EXPECT_EQ(order, "0abc");
}

TEST(RunLoop, ADrainEndsThoughBlocksQueueOthers) {
    RunLoop loop{std::make_shared<ManualClock>()};
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        loop.async(again);
    };
    loop.async(again);
    EXPECT_EQ(loop.drain(), 1U);
    EXPECT_EQ(loop.drain(), 1U);
    EXPECT_EQ(runs, 2);
}

TEST(RunLoop, KeepsTheOrderInsideABlockThatRunsTheLoop) {
    RunLoop loop{std::make_shared<ManualClock>()};
    std::string order;
    loop.async([&] {
        order += 'a';
        loop.async([&] { order += 'c'; });
        EXPECT_TRUE(loop.runUntil([&] { return order.ends_with('c'); }, std::chrono::nanoseconds::max()));
        order += 'd';
    });
    loop.async([&] { order += 'b'; });
    loop.drain();
    EXPECT_EQ(order, "abcd");
}

TEST(RunLoop, TellsAForeignLoopWhenThereIsWork) {
    const auto clock = std::make_shared<ManualClock>();
    RunLoop loop{clock};
    EXPECT_FALSE(isReadable(loop));
    loop.async([] {});
    EXPECT_TRUE(isReadable(loop));
    loop.drain();
    EXPECT_FALSE(isReadable(loop));
    loop.asyncAfter(1s, [] {});
    EXPECT_FALSE(isReadable(loop));
    clock->advance(1s);
    EXPECT_TRUE(isReadable(loop));

    RunLoop steady;
    steady.asyncAfter(2ms, [] {});
    EXPECT_TRUE(isReadable(steady, 10'000));
    EXPECT_EQ(steady.drain(), 1U);
}

TEST(RunLoop, BelongsToTheThreadThatRunsIt) {
    RunLoop loop;
    EXPECT_FALSE(loop.isCurrent());
    std::jthread other{[&] {
        loop.async([&] {
            EXPECT_TRUE(loop.isCurrent());
            loop.stop();
        });
        loop.run();
    }};
    other.join();
    EXPECT_FALSE(loop.isCurrent());
}

TEST(RunLoop, RunUntilGivesUpAfterItsLimit) {
    RunLoop loop;
    EXPECT_FALSE(loop.runUntil([] { return false; }, 5ms));
    bool done = false;
    loop.async([&] { done = true; });
    EXPECT_TRUE(loop.runUntil([&] { return done; }, 10s));
}

TEST(RunLoop, AClockMayOutliveItsLoops) {
    const auto clock = std::make_shared<ManualClock>();
    {
        const RunLoop loop{clock};
    }
    clock->advance(1s);
}

TEST(RunLoopConcurrency, TakesBlocksFromEveryThread) {
    const auto clock = std::make_shared<ManualClock>();
    RunLoop loop{clock};
    std::atomic<int> runs = 0;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 200; ++i) {
                    loop.async([&] { ++runs; });
                    loop.asyncAfter(1ms, [&] { ++runs; });
                    clock->advance(1ms);
                }
            });
        }
        EXPECT_TRUE(loop.runUntil([&] { return runs == 1600; }, 30s));
    }
    EXPECT_EQ(runs, 1600);
}

TEST(SerialQueue, RunsBlocksInOrderAndTheRestBeforeItGoes) {
    std::vector<int> order;
    {
        SerialQueue queue{"dev.kivo.test"};
        for (int i = 0; i < 100; ++i) {
            queue.async([&order, i] { order.push_back(i); });
        }
    }
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(SerialQueue, SyncWorksFromOutsideAndFromInside) {
    SerialQueue queue{"dev.kivo.test"};
    int depth = 0;
    queue.sync([&] { queue.sync([&] { ++depth; }); });
    EXPECT_EQ(depth, 1);
}

TEST(SerialQueueConcurrency, MayGoInsideItsOwnBlock) {
    std::atomic<bool> gone = false;
    auto queue = std::make_shared<SerialQueue>("dev.kivo.test");
    auto* const raw = queue.get();
    raw->async([held = std::move(queue), &gone]() mutable {
        held.reset();
        gone = true;
        gone.notify_all();
    });
    gone.wait(false);
}

TEST(SerialQueueConcurrency, BlocksOfManyThreadsNeverOverlap) {
    int unguarded = 0;
    {
        SerialQueue queue{"dev.kivo.test"};
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 500; ++i) {
                    const auto before = [&] {
                        int now = 0;
                        queue.sync([&] { now = ++unguarded; });
                        return now;
                    }();
                    queue.async([&, before] {
                        EXPECT_GE(unguarded, before);
                        ++unguarded;
                    });
                }
            });
        }
        threads.clear();
    }
    EXPECT_EQ(unguarded, 4000);
}

TEST(SerialQueue, SyncComesAfterWhatWasPushedAndBeforeWhatItPushes) {
    std::string order;
    {
        SerialQueue queue{"dev.kivo.test"};
        std::latch begun{1};
        queue.async([&] {
            begun.wait();
            order += 'a';
        });
        std::jthread release{[&] { begun.count_down(); }};
        queue.sync([&] {
            queue.async([&] { order += 'c'; });
            order += 'b';
        });
    }
    EXPECT_EQ(order, "abc");
}

} // namespace
} // namespace kivo::platform
