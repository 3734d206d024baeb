#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace kivo::platform {

/// Lets one thread at a time do its work. Unlike a mutex, waits until a deadline only, which the thread sanitizer
/// understands.
class Turns {
public:
    /// The turn lasts until this goes.
    class Turn {
    public:
        explicit Turn(Turns& turns)
            : turns_{&turns} {}

        Turn(Turn&& other) noexcept
            : turns_{std::exchange(other.turns_, nullptr)} {}

        Turn& operator=(Turn&&) = delete;

        ~Turn() {
            if (turns_ != nullptr) {
                turns_->end();
            }
        }

    private:
        Turns* turns_;
    };

    /// Absent when the deadline passes.
    std::optional<Turn> take(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock{mutex_};
        if (!ended_.wait_until(lock, deadline, [this] { return !isTaken_; })) {
            return std::nullopt;
        }
        isTaken_ = true;
        return Turn{*this};
    }

private:
    void end() {
        {
            const std::scoped_lock lock{mutex_};
            isTaken_ = false;
        }
        ended_.notify_one();
    }

    std::mutex mutex_;
    std::condition_variable ended_;
    bool isTaken_ = false;
};

} // namespace kivo::platform
