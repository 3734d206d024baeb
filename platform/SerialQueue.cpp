#include <kivo/platform/DispatchQueue.hpp>

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace kivo::platform {

/// Shared with the thread, which may outlive the queue object: the last reference can go inside a block.
class SerialQueue::State {
public:
    explicit State(std::string label)
        : label_{std::move(label)} {}

    const std::string& label() const { return label_; }

    bool isCurrent() const { return thread_.get_id() == std::this_thread::get_id(); }

    void start(const std::shared_ptr<State>& self) {
        thread_ = std::thread{[self] { self->work(); }};
        // The kernel keeps fifteen characters.
        pthread_setname_np(thread_.native_handle(), label_.substr(0, 15).c_str());
    }

    void finish() {
        {
            const std::scoped_lock lock{mutex_};
            finishing_ = true;
        }
        changed_.notify_one();
        if (isCurrent()) {
            thread_.detach();
        } else {
            thread_.join();
        }
    }

    void push(std::function<void()> block) {
        {
            const std::scoped_lock lock{mutex_};
            blocks_.push_back(std::move(block));
        }
        changed_.notify_one();
    }

private:
    void work() {
        std::unique_lock lock{mutex_};
        while (true) {
            changed_.wait(lock, [this] { return finishing_ || !blocks_.empty(); });
            if (blocks_.empty()) {
                return;
            }
            {
                const auto block = std::move(blocks_.front());
                blocks_.pop_front();
                lock.unlock();
                block();
            }
            lock.lock();
        }
    }

    const std::string label_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> blocks_;
    bool finishing_ = false;
    std::thread thread_;
};

SerialQueue::SerialQueue(std::string label, QualityOfService /*qualityOfService*/)
    : state_{std::make_shared<State>(std::move(label))} {
    state_->start(state_);
}

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
