#include "platform/curl/CurlThreads.hpp"

#include "platform/posix/BackgroundThread.hpp"
#include "platform/posix/ExitGuard.hpp"

#include <openssl/crypto.h>

#include <utility>

namespace kivo::platform {

/// One thread, for the process's end.
class CurlThreads::Member final : public Stoppable {
public:
    explicit Member(std::shared_ptr<CurlDriving> work)
        : work_{std::move(work)} {}

    void stop() override { work_->stop(); }

private:
    const std::shared_ptr<CurlDriving> work_;
};

std::error_code CurlThreads::start(const std::shared_ptr<CurlDriving>& work, bool hasCallbacks) {
    work_ = work.get();
    const auto run = [&](const char* name, void (CurlThreads::*body)()) {
        const auto member = std::make_shared<Member>(work);
        if (!ExitGuard::shared().add(member)) {
            return std::error_code{};
        }
        const auto error = startBackgroundThread(name, [this, member, body] {
            ExitGuard::markMemberThread();
            (this->*body)();
            // Otherwise OpenSSL frees its data at the thread's end, for which an exiting process does not wait.
            OPENSSL_thread_stop();
            ExitGuard::shared().remove(member.get());
        });
        if (error) {
            ExitGuard::shared().remove(member.get());
        }
        return error;
    };
    auto error = run("kivo-network", &CurlThreads::runNetwork);
    if (!error && hasCallbacks) {
        error = run("kivo-callbacks", &CurlThreads::runCallbacks);
        if (error) {
            stop();
        }
    }
    return error;
}

void CurlThreads::wake() {
    std::unique_lock lock{mutex_};
    isDue_ = true;
    const bool isDriven = isDriven_;
    const bool isForCallbackThread = isCallbackThreadAsleep_ && !isStopping_ && work_->sparesNetworkThread();
    lock.unlock();
    if (isDriven) {
        work_->interrupt();
    } else {
        (isForCallbackThread ? callbacks_ : network_).notify_one();
    }
}

void CurlThreads::callBack(Block block) {
    std::unique_lock lock{mutex_};
    blocks_.push_back(std::move(block));
    const bool mustWake = isCallbackThreadAsleep_;
    lock.unlock();
    if (mustWake) {
        callbacks_.notify_one();
    }
}

void CurlThreads::stop() {
    {
        const std::scoped_lock lock{mutex_};
        isStopping_ = true;
    }
    wake();
    network_.notify_one();
}

bool CurlThreads::mustReturn() {
    const std::scoped_lock lock{mutex_};
    return isStopping_ || (!blocks_.empty() && isCallbackThread());
}

void CurlThreads::drive(std::unique_lock<std::mutex>& lock) {
    isDriven_ = true;
    isDue_ = false;
    lock.unlock();
    const bool isLeft = work_->drive();
    lock.lock();
    isDriven_ = false;
    isDue_ = isDue_ || isLeft;
}

void CurlThreads::runNetwork() {
    std::unique_lock lock{mutex_};
    while (!isStopping_ || isDriven_) {
        if (isDue_ && !isDriven_) {
            drive(lock);
        } else {
            network_.wait(lock);
        }
    }
    lock.unlock();
    work_->finish();
    lock.lock();
    isFinished_ = true;
    callbacks_.notify_one();
}

void CurlThreads::runCallbacks() {
    std::unique_lock lock{mutex_};
    callbackThread_ = std::this_thread::get_id();
    // The two vectors change places, so that a busy queue allocates nothing.
    std::vector<Block> due;
    while (!blocks_.empty() || !isFinished_) {
        if (isDue_ && !isDriven_ && !isStopping_ && blocks_.empty() && work_->sparesNetworkThread()) {
            drive(lock);
            continue;
        }
        if ((isDue_ || isStopping_) && !isDriven_) {
            network_.notify_one();
        }
        if (!blocks_.empty()) {
            std::swap(due, blocks_);
            lock.unlock();
            for (auto& block : due) {
                // A block that throws ends the process, as on any queue.
                [&]() noexcept { block(); }();
                block = nullptr;
            }
            due.clear();
            lock.lock();
        } else {
            isCallbackThreadAsleep_ = true;
            callbacks_.wait(lock);
            isCallbackThreadAsleep_ = false;
        }
    }
}

} // namespace kivo::platform
