#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <functional>
#include <memory>
#include <system_error>
#include <utility>

namespace kivo {

/// Runs `block` on `queue`, or at once when the system has no thread left for the queue, so that no answer is lost.
inline void runOn(platform::DispatchQueue& queue, const std::function<void()>& block) {
    try {
        queue.async(block);
    } catch (const std::system_error&) {
        block();
    }
}

/// A completion that runs on `queue` and is destroyed there, so that the captures of a host are used by one thread
/// only.
template <class Outcome>
std::function<void(Outcome)> runningOn(std::shared_ptr<platform::DispatchQueue> queue,
                                       std::function<void(Outcome)> completion) {
    using Completion = std::function<void(Outcome)>;
    const std::shared_ptr<Completion> kept{
        new Completion{std::move(completion)}, [queue](Completion* last) {
            // The block is copied into the queue, and either copy may live longer, so the block itself destroys.
            runOn(*queue, [owned = std::make_shared<std::unique_ptr<Completion>>(last)] { owned->reset(); });
        }};
    return [queue = std::move(queue), kept](Outcome outcome) {
        runOn(*queue, [kept, outcome = std::move(outcome)] { (*kept)(outcome); });
    };
}

} // namespace kivo
