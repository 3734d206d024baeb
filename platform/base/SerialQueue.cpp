#include <kivo/platform/DispatchQueue.hpp>

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace kivo::platform {

/// Shared with the thread, which may outlive the queue object: the last reference can go inside a block.
class SerialQueue::State : public std::enable_shared_from_this<State> {
public:
    explicit State(std::string label)
        : label_{std::move(label)} {}

    const std::string& label() const { return label_; }

    /// Whether the calling thread is running one of the queue's blocks.
    bool isCurrent() const { return runner_ == std::this_thread::get_id(); }

    void finish() {
        {
            const std::scoped_lock lock{mutex_};
            finishing_ = true;
        }
        changed_.notify_all();
        if (!thread_.joinable()) {
            return;
        }
        if (isCurrent()) {
            thread_.detach();
        } else {
            thread_.join();
        }
    }

    void push(std::function<void()> block) {
        {
            const std::scoped_lock lock{mutex_};
            // First: without a thread the block must not stay behind.
            startThread();
            blocks_.push_back(std::move(block));
        }
        changed_.notify_one();
    }

    /// Runs `block` on the calling thread if nothing else is due.
    bool runAtOnce(const std::function<void()>& block) {
        std::unique_lock lock{mutex_};
        if (isBusy() || !blocks_.empty()) {
            return false;
        }
        run(block, lock);
        // Something may have been pushed meanwhile, and the thread waits for its turn.
        changed_.notify_one();
        return true;
    }

private:
    bool isBusy() const { return runner_ != std::thread::id{}; }

    /// A block that throws ends the process, on whatever thread it runs.
    void run(const std::function<void()>& block, std::unique_lock<std::mutex>& lock) noexcept {
        runner_ = std::this_thread::get_id();
        lock.unlock();
        block();
        lock.lock();
        runner_ = std::thread::id{};
    }

    /// Threads cost more than most of what queues are for.
    void startThread() {
        if (thread_.joinable()) {
            return;
        }
        thread_ = std::thread{[self = shared_from_this()] { self->work(); }};
        // The kernel keeps fifteen characters.
        pthread_setname_np(thread_.native_handle(), label_.substr(0, 15).c_str());
    }

    void work() {
        std::unique_lock lock{mutex_};
        while (true) {
            changed_.wait(lock, [this] { return !isBusy() && (finishing_ || !blocks_.empty()); });
            if (blocks_.empty()) {
                return;
            }
            auto block = std::move(blocks_.front());
            blocks_.pop_front();
            run([&block] { std::exchange(block, nullptr)(); }, lock);
        }
    }

    const std::string label_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
    /// Who runs a block; nobody's identifier while none is running.
    std::atomic<std::thread::id> runner_;
    bool finishing_ = false;
    std::thread thread_;
};

SerialQueue::SerialQueue(std::string label, QualityOfService /*qualityOfService*/)
    : state_{std::make_shared<State>(std::move(label))} {}

SerialQueue::~SerialQueue() {
    state_->finish();
}

void SerialQueue::async(std::function<void()> block) {
    // Held: the block may take the queue with it before the push has returned.
    const auto state = state_;
    state->push(std::move(block));
}

void SerialQueue::sync(const std::function<void()>& block) {
    const auto state = state_;
    if (state->isCurrent()) {
        block();
        return;
    }
    if (state->runAtOnce(block)) {
        return;
    }
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
    state->push([&] {
        block();
        // Notified under the lock: the waiting side's stack must not go before this returns.
        const std::scoped_lock lock{mutex};
        done = true;
        changed.notify_one();
    });
    std::unique_lock lock{mutex};
    changed.wait(lock, [&] { return done; });
}

const std::string& SerialQueue::label() const {
    return state_->label();
}

} // namespace kivo::platform
