#include "platform/curl/DeliveryQueue.hpp"

#include "platform/posix/BackgroundThread.hpp"

#include <condition_variable>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::platform {

class DeliveryQueue::State {
public:
    void add(std::function<void()> block) {
        bool sleeping = false;
        {
            const std::scoped_lock lock{mutex_};
            blocks_.push_back(std::move(block));
            sleeping = sleeping_;
        }
        if (sleeping) {
            changed_.notify_one();
        }
    }

    void close() {
        {
            const std::scoped_lock lock{mutex_};
            closed_ = true;
        }
        changed_.notify_one();
    }

    void run() {
        // The two vectors change places, so that a busy queue allocates nothing.
        std::vector<std::function<void()>> due;
        while (take(due)) {
            for (auto& block : due) {
                block();
                block = nullptr;
            }
            due.clear();
        }
    }

private:
    bool take(std::vector<std::function<void()>>& due) {
        std::unique_lock lock{mutex_};
        sleeping_ = true;
        changed_.wait(lock, [this] { return closed_ || !blocks_.empty(); });
        sleeping_ = false;
        std::swap(due, blocks_);
        return !due.empty();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::function<void()>> blocks_;
    bool sleeping_ = false;
    bool closed_ = false;
};

DeliveryQueue::DeliveryQueue()
    : state_{std::make_shared<State>()} {
    if (const auto error = startBackgroundThread("kivo-callbacks", [state = state_] { state->run(); })) {
        throw std::system_error{error, "kivo cannot start its callback thread"};
    }
}

DeliveryQueue::~DeliveryQueue() {
    state_->close();
}

void DeliveryQueue::async(std::function<void()> block) {
    state_->add(std::move(block));
}

} // namespace kivo::platform
