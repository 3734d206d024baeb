#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <chrono>

namespace kivo::platform {

/// The queue of the host's main thread: screens, their delayed steps and screen outcomes run here.
class KIVO_EXPORT MainQueue : public DispatchQueue {
public:
    /// Runs `block` no sooner than `delay` from now. Callable from any thread.
    virtual void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> block) = 0;

    /// Whether the calling thread is the one on which this queue runs its blocks.
    virtual bool isCurrent() const = 0;
};

} // namespace kivo::platform
