#pragma once

#include "support/Eventually.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace kivo::test {

/// Collects what completions receive, in order. Copies share the collection.
template <class Outcome>
class Collected {
public:
    struct Entry {
        Outcome outcome;
        std::thread::id thread;
    };

    /// A completion whose outcome is kept.
    std::function<void(Outcome)> completion() {
        return [state = state_](Outcome outcome) {
            {
                const std::scoped_lock lock{state->mutex};
                state->entries.push_back({std::move(outcome), std::this_thread::get_id()});
            }
            state->changed.notify_all();
        };
    }

    /// The entries once there are `count`, or those that came within the limit.
    std::vector<Entry> wait(std::size_t count = 1, std::chrono::milliseconds limit = patience) const {
        std::unique_lock lock{state_->mutex};
        state_->changed.wait_for(lock, limit, [&] { return state_->entries.size() >= count; });
        return state_->entries;
    }

    /// The entries so far.
    std::vector<Entry> seen() const { return wait(0); }

private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        std::vector<Entry> entries;
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

using Answers = Collected<platform::UrlOutcome>;

/// Sends one request and waits for its outcome.
inline platform::UrlOutcome exchange(platform::UrlSession& session, platform::UrlRequest request) {
    Answers answers;
    const auto task = session.dataTask(std::move(request), answers.completion());
    auto entries = answers.wait();
    if (entries.empty()) {
        return std::unexpected{platform::UrlError{platform::UrlErrorKind::unknown, "no completion came"}};
    }
    return std::move(entries.front().outcome);
}

/// "200 body", "204 without body", or the kind of the error. "200 body?" is not proven whole.
inline std::string summary(const platform::UrlOutcome& outcome) {
    if (!outcome) {
        return std::string{name(outcome.error().kind)};
    }
    return std::to_string(outcome->status) + (outcome->body ? " " + *outcome->body : " without body") +
           (outcome->isProvenWhole ? "" : "?");
}

} // namespace kivo::test
