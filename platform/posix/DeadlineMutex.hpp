#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

namespace kivo::platform {

/// A mutex with a deadline. Unlike `std::timed_mutex`, the thread sanitizer understands it.
class DeadlineMutex {
public:
    /// Holds the mutex until it is destroyed.
    class Lock {
    public:
        explicit Lock(DeadlineMutex& mutex)
            : mutex_{&mutex} {}

        Lock(Lock&& other) noexcept
            : mutex_{std::exchange(other.mutex_, nullptr)} {}

        Lock& operator=(Lock&&) = delete;

        ~Lock() {
            if (mutex_ != nullptr) {
                mutex_->unlock();
            }
        }

    private:
        DeadlineMutex* mutex_;
    };

    /// Absent when the deadline passes first.
    std::optional<Lock> lock(std::chrono::steady_clock::time_point deadline) {
        std::unique_lock lock{mutex_};
        if (!unlocked_.wait_until(lock, deadline, [this] { return !isLocked_; })) {
            return std::nullopt;
        }
        isLocked_ = true;
        return Lock{*this};
    }

private:
    void unlock() {
        {
            const std::scoped_lock lock{mutex_};
            isLocked_ = false;
        }
        unlocked_.notify_one();
    }

    std::mutex mutex_;
    std::condition_variable unlocked_;
    bool isLocked_ = false;
};

} // namespace kivo::platform
