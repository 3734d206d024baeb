#pragma once

#include <kivo/platform/Clock.hpp>
#include <kivo/platform/MainQueue.hpp>

#include <cstddef>

namespace kivo::platform {

/// The main queue as a loop that a host runs, or runs as a part of the host's own loop. Each platform defines this
/// class.
///
/// A host without a loop of its own calls `RunLoop::main()->run()` on its main thread. A host with one polls
/// `fileDescriptor()` for reading and calls `drain()` when it becomes readable.
class KIVO_EXPORT RunLoop final : public MainQueue {
public:
    /// The loop behind the default main queue. The first thread that runs or drains the loop becomes its thread.
    static const std::shared_ptr<RunLoop>& main();

    /// A loop whose delays follow `clock`; by default the machine's own clock.
    explicit RunLoop(std::shared_ptr<Clock> clock = std::make_shared<SteadyClock>());
    RunLoop(const RunLoop&) = delete;
    RunLoop& operator=(const RunLoop&) = delete;
    ~RunLoop() override;

    void async(std::function<void()> block) override;
    void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> block) override;
    bool isCurrent() const override;

    /// Runs blocks as they come until `stop()`. The remaining blocks wait for the next run.
    void run();

    /// Runs until `done` holds or `limit` of real time has passed; returns whether `done` holds.
    bool runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit);

    /// Ends `run()` after the block in progress and the blocks that were due together with it. Without a run in
    /// progress, the next run ends at once. Callable from any thread.
    void stop();

    /// Runs the blocks that are due now, in order, and returns how many. Never waits.
    std::size_t drain();

    /// Becomes readable when `drain()` has something to do. Owned by the loop; poll it, do not read it.
    int fileDescriptor() const;

private:
    class State;
    std::shared_ptr<State> state_;
};

} // namespace kivo::platform
