#pragma once

#include <kivo/Export.hpp>

#include <chrono>
#include <functional>
#include <mutex>
#include <vector>

namespace kivo::platform {

/// A monotonic clock, by which a run loop measures its delays.
class KIVO_EXPORT Clock {
public:
    /// A time on this clock; it never goes back.
    using Time = std::chrono::nanoseconds;

    virtual ~Clock() = default;

    /// Time since a fixed, arbitrary start. Callable from any thread.
    virtual Time now() const = 0;

    /// Whether time passes by itself, so that waiting for a deadline makes sense.
    virtual bool advancesByItself() const = 0;

    /// Calls `listener` whenever time was moved by hand.
    virtual void onAdvance(std::function<void()> listener) = 0;
};

/// The machine's own monotonic clock.
class KIVO_EXPORT SteadyClock final : public Clock {
public:
    Time now() const override;

    bool advancesByItself() const override { return true; }

    void onAdvance(std::function<void()>) override {}
};

/// A clock that stands still until it is advanced; tests use it instead of sleeping.
class KIVO_EXPORT ManualClock final : public Clock {
public:
    Time now() const override;

    bool advancesByItself() const override { return false; }

    void onAdvance(std::function<void()> listener) override;

    /// Moves time forward and wakes the run loops that use this clock. Callable from any thread.
    void advance(Time by);

private:
    mutable std::mutex mutex_;
    Time now_{0};
    std::vector<std::function<void()>> listeners_;
};

} // namespace kivo::platform
