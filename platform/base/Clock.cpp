#include <kivo/platform/Clock.hpp>

#include <utility>

namespace kivo::platform {

Clock::Time SteadyClock::now() const {
    return std::chrono::steady_clock::now().time_since_epoch();
}

Clock::Time ManualClock::now() const {
    const std::scoped_lock lock{mutex_};
    return now_;
}

void ManualClock::onAdvance(std::function<void()> listener) {
    const std::scoped_lock lock{mutex_};
    listeners_.push_back(std::move(listener));
}

void ManualClock::advance(Time by) {
    std::vector<std::function<void()>> listeners;
    {
        const std::scoped_lock lock{mutex_};
        now_ += by;
        listeners = listeners_;
    }
    for (const auto& listener : listeners) {
        listener();
    }
}

} // namespace kivo::platform
