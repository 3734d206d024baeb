#include "Trial.hpp"

#include <kivo/platform/RunLoop.hpp>

#include <poll.h>

#include <atomic>
#include <thread>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using platform::ManualClock;
using platform::RunLoop;

void loopFollowsItsClock(Trial& trial) {
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
    clock->advance(1s - 2ns);
    trial.expectEqual("blocks a nanosecond early", loop.drain(), 0U);
    clock->advance(1ns);
    trial.expectEqual("blocks in time", loop.drain(), 2U);
    clock->advance(10s);
    loop.drain();
    trial.expectEqual("the order of the blocks", order, "0abc");
}

void drainEnds(Trial& trial) {
    RunLoop loop{std::make_shared<ManualClock>()};
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        loop.async(again);
    };
    loop.async(again);
    trial.expectEqual("blocks of the first drain", loop.drain(), 1U);
    trial.expectEqual("blocks of the second drain", loop.drain(), 1U);
    trial.expectEqual("blocks run", runs, 2);
}

void loopRunsInABlock(Trial& trial) {
    RunLoop loop{std::make_shared<ManualClock>()};
    std::string order;
    loop.async([&] {
        order += 'a';
        loop.async([&] { order += 'c'; });
        trial.expect(loop.runUntil([&] { return order.ends_with('c'); }, std::chrono::nanoseconds::max()),
                     "runUntil() tells that its condition holds");
        order += 'd';
    });
    loop.async([&] { order += 'b'; });
    loop.drain();
    trial.expectEqual("the order of the blocks", order, "abcd");
}

void loopRunsAndStops(Trial& trial) {
    RunLoop loop;
    trial.expect(!loop.isCurrent(), "a loop that has not run yet is current on no thread");
    bool isCurrent = false;
    std::thread{[&] {
        loop.async([&] {
            isCurrent = loop.isCurrent();
            loop.stop();
        });
        loop.run();
    }}.join();
    trial.expect(isCurrent, "the loop is current on the thread that runs it");
    trial.expect(!loop.isCurrent(), "and on no other thread");
    trial.expect(!loop.runUntil([] { return false; }, 5ms), "runUntil() ends after its limit");
    const auto clock = std::make_shared<ManualClock>();
    {
        const RunLoop gone{clock};
    }
    clock->advance(1s);
}

bool isReadable(const RunLoop& loop, int milliseconds = 0) {
    pollfd wanted{.fd = loop.fileDescriptor(), .events = POLLIN, .revents = 0};
    return poll(&wanted, 1, milliseconds) == 1;
}

void loopTellsOthers(Trial& trial) {
    const auto clock = std::make_shared<ManualClock>();
    RunLoop loop{clock};
    trial.expect(!isReadable(loop), "nothing to read at first");
    loop.async([] {});
    trial.expect(isReadable(loop), "something to read while a block waits");
    loop.drain();
    loop.asyncAfter(1s, [] {});
    trial.expect(!isReadable(loop), "nothing to read before a delay is over");
    clock->advance(1s);
    trial.expect(isReadable(loop), "something to read when it is over");
    RunLoop steady;
    steady.asyncAfter(2ms, [] {});
    trial.expect(isReadable(steady, static_cast<int>(trial.under.patience.count())), "the machine's clock counts, too");
    trial.expectEqual("blocks that are due then", steady.drain(), 1U);
}

void loopTakesBlocksOfEveryThread(Trial& trial) {
    const auto clock = std::make_shared<ManualClock>();
    RunLoop loop{clock};
    std::atomic<int> runs = 0;
    std::vector<std::jthread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                loop.async([&] { ++runs; });
                loop.asyncAfter(1ms, [&] { ++runs; });
                clock->advance(1ms);
            }
        });
    }
    loop.runUntil([&] { return runs == 1600; }, trial.under.patience);
    threads.clear();
    trial.expectEqual("blocks run of 1600", runs.load(), 1600);
}

} // namespace

Checks runLoopChecks() {
    const auto* const loop = "RunLoop";
    return {
        {loop, "follows its clock to the nanosecond", loopFollowsItsClock},
        {loop, "drains the blocks that are due and no others", drainEnds},
        {loop, "keeps the order in a block that runs the loop", loopRunsInABlock},
        {loop, "tells the host's own loop when there is work", loopTellsOthers},
        {loop, "takes blocks of every thread, while its clock advances", loopTakesBlocksOfEveryThread},
        {loop, "belongs to the thread that runs it, and ends when it is told", loopRunsAndStops},
    };
}

} // namespace kivo::check
