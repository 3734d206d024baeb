#include "Trial.hpp"

#include <atomic>
#include <latch>
#include <mutex>
#include <thread>

namespace kivo::check {
namespace {

using namespace std::chrono_literals;
using platform::ManualClock;
using std::chrono::steady_clock;

std::vector<int> upTo(int count) {
    std::vector<int> numbers;
    numbers.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        numbers.push_back(i);
    }
    return numbers;
}

// What a block of a broken queue may still write to when its check is over.
struct Counters {
    std::atomic<int> runs = 0;
    std::atomic<int> elsewhere = 0;
    std::atomic<int> inside = 0;
    std::atomic<int> overlaps = 0;
};

void runsInOrder(Trial& trial) {
    const auto services = trial.services();
    auto& queue = required(services.mainQueue);
    const auto order = std::make_shared<std::vector<int>>();
    for (int i = 0; i < 100; ++i) {
        queue.async([order, i] { order->push_back(i); });
    }
    trial.expectEqual("blocks run before async() returned", order->size(), 0U);
    trial.await([&] { return order->size() >= 100; });
    trial.expectEqual("the order of the blocks", *order, upTo(100));
}

void takesBlocksOfEveryThread(Trial& trial) {
    const auto services = trial.services();
    auto& queue = required(services.mainQueue);
    const auto seen = std::make_shared<Counters>();
    {
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&queue, seen, main = &queue] {
                seen->elsewhere += queue.isCurrent() ? 1 : 0;
                const auto block = [seen, main] {
                    ++seen->runs;
                    seen->elsewhere += main->isCurrent() ? 0 : 1;
                };
                for (int i = 0; i < 50; ++i) {
                    queue.async(block);
                    queue.asyncAfter(1ms, block);
                }
            });
        }
    }
    trial.await([&] { return seen->runs >= 400; });
    trial.linger(5ms);
    trial.expectEqual("blocks run of 400", seen->runs.load(), 400);
    trial.expectEqual("times that isCurrent() was wrong", seen->elsewhere.load(), 0);
}

void delaysBlocks(Trial& trial) {
    const auto services = trial.services();
    auto& queue = required(services.mainQueue);
    const auto order = std::make_shared<std::string>();
    const auto start = steady_clock::now();
    const auto early = std::make_shared<std::atomic<int>>(0);
    const auto add = [&](std::chrono::nanoseconds delay, char name) {
        queue.asyncAfter(delay, [=] {
            *order += name;
            *early += steady_clock::now() - start < delay ? 1 : 0;
        });
    };
    add(60ms, 'c');
    add(20ms, 'a');
    add(20ms, 'b');
    add(std::chrono::nanoseconds::max(), '!');
    add(-1s, '0');
    trial.await([&] { return order->size() >= 4; });
    trial.linger(5ms);
    trial.expectEqual("the order of delayed blocks", *order, "0abc");
    trial.expectEqual("blocks that ran before their time", early->load(), 0);
}

void keepsOrderFromWithin(Trial& trial) {
    const auto services = trial.services();
    auto& queue = required(services.mainQueue);
    const auto order = std::make_shared<std::string>();
    queue.async([&queue, order] {
        queue.async([order] { *order += 'c'; });
        *order += 'a';
    });
    queue.async([order] { *order += 'b'; });
    trial.await([&] { return order->size() >= 3; });
    trial.expectEqual("the order of the blocks", *order, "abc");
}

void queueRunsInOrder(Trial& trial) {
    // Behind a mutex: a queue that breaks its promise runs blocks at once.
    struct Order {
        std::mutex mutex;
        std::vector<int> numbers;
    };

    const auto order = std::make_shared<Order>();
    const auto caller = std::this_thread::get_id();
    const auto own = std::make_shared<Counters>();
    {
        const auto queue = trial.under.makeSerialQueue("dev.kivo.check");
        for (int i = 0; i < 100; ++i) {
            queue->async([order, own, caller, i] {
                const std::scoped_lock lock{order->mutex};
                order->numbers.push_back(i);
                own->elsewhere += std::this_thread::get_id() == caller ? 1 : 0;
            });
        }
    }
    trial.expectEqual("the order of the blocks, all of which ran before the queue went", order->numbers, upTo(100));
    trial.expectEqual("blocks that ran on the caller's thread", own->elsewhere.load(), 0);
}

void queueRunsOneAtATime(Trial& trial) {
    const auto seen = std::make_shared<Counters>();
    {
        const auto queue = trial.under.makeSerialQueue("dev.kivo.check");
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&queue, seen] {
                for (int i = 0; i < 100; ++i) {
                    queue->async([seen] {
                        seen->overlaps += seen->inside++ == 0 ? 0 : 1;
                        std::this_thread::yield();
                        --seen->inside;
                        ++seen->runs;
                    });
                }
            });
        }
        threads.clear();
    }
    trial.expectEqual("blocks run of 400", seen->runs.load(), 400);
    trial.expectEqual("blocks that met another one", seen->overlaps.load(), 0);
}

void queueGoesInItsBlock(Trial& trial) {
    const auto gone = std::make_shared<std::atomic<bool>>(false);
    auto queue = trial.under.makeSerialQueue("dev.kivo.check");
    auto* const raw = queue.get();
    raw->async([held = std::move(queue), gone]() mutable {
        held.reset();
        *gone = true;
    });
    trial.expectSoon("the block runs to its end", [&] { return gone->load(); });
}

void syncKeepsItsPlace(Trial& trial) {
    std::string order;
    {
        platform::SerialQueue queue{"dev.kivo.check"};
        std::latch begun{1};
        queue.async([&] {
            begun.wait();
            order += 'a';
        });
        const std::jthread release{[&] { begun.count_down(); }};
        queue.sync([&] {
            queue.async([&] { order += 'c'; });
            queue.sync([&] { order += 'b'; });
        });
        trial.expectEqual("the label", queue.label(), "dev.kivo.check");
    }
    trial.expectEqual("the order of the blocks", order, "abc");
}

void syncNeverOverlaps(Trial& trial) {
    // Neither counter is guarded: the queue has to.
    int count = 0;
    int steps = 0;
    {
        platform::SerialQueue queue{"dev.kivo.check"};
        std::vector<std::jthread> threads;
        threads.reserve(4);
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 500; ++i) {
                    int before = 0;
                    queue.sync([&] { before = ++count; });
                    queue.async([&, before] { steps += count++ < before ? 1 : 0; });
                }
            });
        }
        threads.clear();
    }
    trial.expectEqual("blocks run of 4000", count, 4000);
    trial.expectEqual("blocks that ran before an earlier one", steps, 0);
}

void clockRises(Trial& trial) {
    const auto clock = trial.under.makeClock();
    auto last = clock->now();
    const auto first = last;
    int steps = 0;
    for (int i = 0; i < 10'000; ++i) {
        const auto now = clock->now();
        steps += now < last ? 1 : 0;
        last = now;
    }
    trial.expectEqual("steps back", steps, 0);
    trial.expect(clock->advancesByItself(), "the machine's clock advances by itself");
    const auto start = steady_clock::now();
    trial.expectSoon("the clock moves on", [&] { return clock->now() - first >= 2ms; });
    trial.expect(clock->now() - first <= steady_clock::now() - start + 5s, "the clock counts nanoseconds");
}

void manualClockStands(Trial& trial) {
    ManualClock clock;
    int told = 0;
    clock.onAdvance([&] { ++told; });
    const auto first = clock.now();
    trial.expect(!clock.advancesByItself(), "the clock does not advance by itself");
    clock.advance(5s);
    trial.expectEqual("seconds passed", (clock.now() - first).count(), std::chrono::nanoseconds{5s}.count());
    trial.expectEqual("calls of the listener", told, 1);
}

} // namespace

Checks mainQueueChecks() {
    const auto* const seam = "MainQueue";
    return {
        {seam, "runs blocks later, in the order in which they came", runsInOrder},
        {seam, "takes blocks of every thread and runs each once, on its own thread", takesBlocksOfEveryThread},
        {seam, "runs a delayed block when it is due and never sooner", delaysBlocks},
        {seam, "runs the blocks of a block after those that waited already", keepsOrderFromWithin},
    };
}

Checks serialQueueChecks() {
    const auto* const seam = "DispatchQueue";
    return {
        {seam, "runs blocks in order on a thread of its own, the last ones before it goes", queueRunsInOrder},
        {seam, "runs one block at a time, whatever thread they come from", queueRunsOneAtATime},
        {seam, "can be released in one of its own blocks", queueGoesInItsBlock},
        {seam, "keeps a block's place with sync(), also from inside", syncKeepsItsPlace},
        {seam, "runs no two blocks at once with sync() and async()", syncNeverOverlaps},
    };
}

Checks clockChecks() {
    return {
        {"Clock", "never goes back and moves on by itself", clockRises},
        {"Clock", "stands still until it is advanced (ManualClock)", manualClockStands},
    };
}

} // namespace kivo::check
