#include "platform/base/Process.hpp"

#include <kivo/platform/RunLoop.hpp>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <iterator>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;

/// The longest time that can pass from `now` on, as far as a clock can tell.
std::chrono::nanoseconds longestFrom(std::chrono::nanoseconds now) {
    return std::chrono::nanoseconds::max() - now;
}

class Descriptor {
public:
    explicit Descriptor(int number)
        : number_{number} {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }

    int get() const { return number_; }

private:
    int number_;
};

struct Delayed {
    Clock::Time deadline;
    std::uint64_t order;
    std::function<void()> block;
};

/// The earliest deadline is the heap's top; equal deadlines keep the order in which they came.
bool laterThan(const Delayed& a, const Delayed& b) {
    return std::pair{a.deadline, a.order} > std::pair{b.deadline, b.order};
}

} // namespace

/// Shared with clocks, whose listeners may outlive the loop.
class RunLoop::State {
public:
    explicit State(std::shared_ptr<Clock> clock)
        : clock_{std::move(clock)} {
        for (const auto& source : {&event_, &timer_}) {
            epoll_event wanted{};
            wanted.events = EPOLLIN;
            epoll_ctl(poll_.get(), EPOLL_CTL_ADD, source->get(), &wanted);
        }
    }

    int descriptor() const { return poll_.get(); }

    bool isOwnedByThisThread() const { return owner_.load() == std::this_thread::get_id(); }

    void takeOwnership() {
        auto nobody = std::thread::id{};
        owner_.compare_exchange_strong(nobody, std::this_thread::get_id());
    }

    void push(std::function<void()> block) {
        const std::scoped_lock lock{mutex_};
        ready_.push_back(std::move(block));
        signal();
    }

    void pushAfter(std::chrono::nanoseconds delay, std::function<void()> block) {
        const std::scoped_lock lock{mutex_};
        const auto now = clock_->now();
        delayed_.push_back({now + std::clamp(delay, 0ns, longestFrom(now)), order_++, std::move(block)});
        std::ranges::push_heap(delayed_, laterThan);
        arm();
    }

    /// Time was moved by hand.
    void wake() {
        const std::scoped_lock lock{mutex_};
        signal();
    }

    std::size_t drain() {
        {
            const std::scoped_lock lock{mutex_};
            clearSignal();
            std::ranges::move(ready_, std::back_inserter(due_));
            ready_.clear();
            const auto now = clock_->now();
            while (!delayed_.empty() && delayed_.front().deadline <= now) {
                std::ranges::pop_heap(delayed_, laterThan);
                due_.push_back(std::move(delayed_.back().block));
                delayed_.pop_back();
            }
            arm();
        }
        std::size_t count = 0;
        for (; !due_.empty(); ++count) {
            const auto block = std::move(due_.front());
            due_.pop_front();
            block();
        }
        return count;
    }

    /// Waits until there may be something to drain, or `limit` has passed.
    void wait(std::chrono::nanoseconds limit) const {
        pollfd wanted{.fd = poll_.get(), .events = POLLIN, .revents = 0};
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
        const timespec patience{.tv_sec = seconds.count(), .tv_nsec = (limit - seconds).count()};
        ppoll(&wanted, 1, &patience, nullptr);
    }

    std::atomic<bool> stopping = false;

private:
    void signal() const {
        const std::uint64_t one = 1;
        std::ignore = write(event_.get(), &one, sizeof one);
    }

    void clearSignal() const {
        std::uint64_t count = 0;
        // Neither read blocks: both descriptors were opened so.
        std::ignore = read(event_.get(), &count, sizeof count); // NOLINT(clang-analyzer-unix.BlockInCriticalSection)
        std::ignore = read(timer_.get(), &count, sizeof count); // NOLINT(clang-analyzer-unix.BlockInCriticalSection)
    }

    /// Makes the timer fire at the earliest deadline, where time passes by itself.
    void arm() const {
        if (!clock_->advancesByItself()) {
            return;
        }
        itimerspec next{};
        if (!delayed_.empty()) {
            const auto wait = std::max(delayed_.front().deadline - clock_->now(), Clock::Time{1});
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(wait);
            next.it_value = {.tv_sec = seconds.count(), .tv_nsec = (wait - seconds).count()};
        }
        timerfd_settime(timer_.get(), 0, &next, nullptr);
    }

    const std::shared_ptr<Clock> clock_;
    const Descriptor poll_{epoll_create1(EPOLL_CLOEXEC)};
    const Descriptor event_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    const Descriptor timer_{timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)};
    std::atomic<std::thread::id> owner_;
    std::mutex mutex_;
    std::deque<std::function<void()>> ready_;
    std::vector<Delayed> delayed_;
    std::uint64_t order_ = 0;
    /// Belongs to the loop's thread: a block may run the loop again, which then goes on with those after it.
    std::deque<std::function<void()>> due_;
};

const std::shared_ptr<RunLoop>& RunLoop::main() {
    using Shared = std::shared_ptr<RunLoop>;
    return Process::current().part<Shared>([] { return new Shared{std::make_shared<RunLoop>()}; });
}

RunLoop::RunLoop(std::shared_ptr<Clock> clock)
    : state_{std::make_shared<State>(clock)} {
    clock->onAdvance([weak = std::weak_ptr{state_}] {
        if (const auto state = weak.lock()) {
            state->wake();
        }
    });
}

RunLoop::~RunLoop() = default;

void RunLoop::async(std::function<void()> block) {
    state_->push(std::move(block));
}

void RunLoop::asyncAfter(std::chrono::nanoseconds delay, std::function<void()> block) {
    state_->pushAfter(delay, std::move(block));
}

bool RunLoop::isCurrent() const {
    return state_->isOwnedByThisThread();
}

void RunLoop::run() {
    const auto state = state_;
    state->takeOwnership();
    while (!state->stopping.exchange(false)) {
        if (state->drain() == 0) {
            state->wait(24h);
        }
    }
}

bool RunLoop::runUntil(const std::function<bool()>& done, std::chrono::nanoseconds limit) {
    const auto state = state_;
    state->takeOwnership();
    const auto now = std::chrono::steady_clock::now();
    const auto end = now + std::min(limit, longestFrom(now.time_since_epoch()));
    while (!done()) {
        const auto left = end - std::chrono::steady_clock::now();
        if (left <= 0ns) {
            return false;
        }
        if (state->drain() == 0) {
            state->wait(left);
        }
    }
    return true;
}

void RunLoop::stop() {
    state_->stopping = true;
    state_->wake();
}

std::size_t RunLoop::drain() {
    const auto state = state_;
    state->takeOwnership();
    return state->drain();
}

int RunLoop::fileDescriptor() const {
    return state_->descriptor();
}

} // namespace kivo::platform
