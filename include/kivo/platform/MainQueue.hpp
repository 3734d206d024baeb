#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <chrono>

namespace kivo::platform {

/// The queue of the host's main thread: screens, their delayed steps and screen outcomes run here.
class KIVO_EXPORT MainQueue : public DispatchQueue {
public:
    /// Runs `block` no sooner than `delay` from now. Callable from any thread.
    virtual void asyncAfter(std::chrono::nanoseconds delay, std::function<void()> block) = 0;

    /// Whether the queue runs its blocks on the calling thread.
    virtual bool isCurrent() const = 0;
};

} // namespace kivo::platform
