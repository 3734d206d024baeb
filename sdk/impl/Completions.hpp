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
    const std::shared_ptr<Completion> kept{new Completion{std::move(completion)}, [queue](Completion* last) {
                                               runOn(*queue, [owned = std::shared_ptr<Completion>{last}] {});
                                           }};
    return [queue = std::move(queue), kept](Outcome outcome) {
        runOn(*queue, [kept, outcome = std::move(outcome)] { (*kept)(outcome); });
    };
}

} // namespace kivo
