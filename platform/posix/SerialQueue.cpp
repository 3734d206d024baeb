#include "platform/posix/SerialQueue.hpp"

#include "platform/posix/BackgroundThread.hpp"
#include "platform/posix/ProcessNumber.hpp"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

using Block = std::function<void()>;

/// Blocks in order, and the thread that runs them. The thread shares the blocks and may outlive the queue object: a
/// block may release the last reference to its own queue.
class SerialBlocks : public std::enable_shared_from_this<SerialBlocks> {
public:
    explicit SerialBlocks(std::string label)
        : label_{std::move(label)} {}

    const std::string& label() const { return label_; }

    /// Whether the calling thread is running one of the blocks.
    bool isCurrent() const { return runner_ == std::this_thread::get_id(); }

    /// Starts the thread unless it runs already.
    void start() {
        const std::scoped_lock lock{mutex_};
        startThread();
    }

    void push(Block block) {
        bool mustWake = false;
        {
            const std::scoped_lock lock{mutex_};
            // First: without a thread the block must not stay behind.
            startThread();
            blocks_.push_back(std::move(block));
            // A block that runs on another thread, in `runAtOnce`, wakes the thread when the block ends.
            mustWake = isAsleep_ && !isBusy();
        }
        if (mustWake) {
            changed_.notify_one();
        }
    }

    /// Runs `block` on the calling thread if no other block is running or waiting.
    bool runAtOnce(const Block& block) {
        bool mustWake = false;
        {
            std::unique_lock lock{mutex_};
            if (isBusy() || !blocks_.empty()) {
                return false;
            }
            runner_ = std::this_thread::get_id();
            lock.unlock();
            run(block);
            lock.lock();
            runner_ = std::thread::id{};
            mustWake = isAsleep_;
        }
        if (mustWake) {
            // The thread left what was pushed meanwhile, because this block was running.
            changed_.notify_one();
        }
        return true;
    }

    /// Lets the thread end after the blocks still waiting.
    void finish() {
        {
            const std::scoped_lock lock{mutex_};
            isFinishing_ = true;
        }
        changed_.notify_one();
    }

    void waitForEnd() {
        std::unique_lock lock{mutex_};
        // A forked child has the queue, but not its thread.
        ended_.wait(lock, [this] { return !isStarted_ || processNumber() != process_; });
    }

private:
    bool isBusy() const { return runner_.load() != std::thread::id{}; }

    /// A block that throws ends the process, on whatever thread it runs.
    static void run(const Block& block) noexcept { block(); }

    /// Called under the lock. The first block starts the thread: threads cost more than most of what queues are for.
    void startThread() {
        if (isStarted_) {
            return;
        }
        // The kernel keeps fifteen characters of a thread's name.
        const auto name = label_.substr(0, 15);
        if (const auto error = startBackgroundThread(name.c_str(), [self = shared_from_this()] { self->work(); })) {
            throw std::system_error{error, "kivo cannot start the thread of the queue \"" + label_ + "\""};
        }
        isStarted_ = true;
        process_ = processNumber();
    }

    void work() {
        // The two vectors change places, so that a busy queue allocates nothing.
        std::vector<Block> due;
        while (take(due)) {
            for (auto& block : due) {
                run(block);
                block = nullptr;
            }
            due.clear();
        }
    }

    /// Waits for blocks and takes all of them; false when the thread is to end.
    bool take(std::vector<Block>& due) {
        std::unique_lock lock{mutex_};
        if (isCurrent()) {
            runner_ = std::thread::id{};
        }
        isAsleep_ = true;
        changed_.wait(lock, [this] { return !isBusy() && (isFinishing_ || !blocks_.empty()); });
        isAsleep_ = false;
        std::swap(due, blocks_);
        if (due.empty()) {
            isStarted_ = false;
            ended_.notify_all();
            return false;
        }
        runner_ = std::this_thread::get_id();
        return true;
    }

    const std::string label_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::condition_variable ended_;
    std::vector<Block> blocks_;
    /// The thread that runs blocks at present; a default identifier while no block runs.
    std::atomic<std::thread::id> runner_;
    bool isStarted_ = false;
    /// The process in which the thread was started.
    pid_t process_ = 0;
    bool isAsleep_ = false;
    bool isFinishing_ = false;
};

class CallbackQueue final : public DispatchQueue {
public:
    explicit CallbackQueue(std::string label)
        : blocks_{std::make_shared<SerialBlocks>(std::move(label))} {
        blocks_->start();
    }

    CallbackQueue(const CallbackQueue&) = delete;
    CallbackQueue& operator=(const CallbackQueue&) = delete;

    ~CallbackQueue() override { blocks_->finish(); }

    void async(Block block) override {
        // Held: the block may release the queue before the push has returned.
        const auto blocks = blocks_;
        blocks->push(std::move(block));
    }

private:
    const std::shared_ptr<SerialBlocks> blocks_;
};

} // namespace

class SerialQueue::State final : public SerialBlocks {
public:
    using SerialBlocks::SerialBlocks;
};

SerialQueue::SerialQueue(std::string label, QualityOfService /*qualityOfService*/)
    : state_{std::make_shared<State>(std::move(label))} {}

SerialQueue::~SerialQueue() {
    state_->finish();
    if (!state_->isCurrent()) {
        state_->waitForEnd();
    }
}

void SerialQueue::async(std::function<void()> block) {
    // Held: the block may release the queue before the push has returned.
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

std::shared_ptr<DispatchQueue> makeCallbackQueue(std::string label) {
    return std::make_shared<CallbackQueue>(std::move(label));
}

} // namespace kivo::platform
