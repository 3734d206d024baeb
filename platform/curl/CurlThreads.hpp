#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace kivo::platform {

/// What the threads of one engine do besides running callbacks. Only one thread at a time drives.
class CurlDriving {
public:
    virtual ~CurlDriving() = default;

    /// Drives the transfers until none is left, and at most until `CurlThreads::mustReturn()`. Returns whether
    /// transfers are left.
    virtual bool drive() = 0;

    /// Ends all transfers. The network thread calls this function last.
    virtual void finish() = 0;

    /// Makes `drive()` look for news. Any thread.
    virtual void interrupt() const = 0;

    /// Whether the callback thread may drive. Any thread.
    virtual bool sparesNetworkThread() const = 0;

    virtual void stop() = 0;
};

/// The two threads of an engine.
///
/// The callback thread runs the callbacks, one at a time and in their order. While no callback waits, the thread drives
/// the transfers as well: an answer then wakes no second thread, which takes longer than the rest of the client's part
/// in a request. The network thread drives whenever a callback runs or waits, so that no callback of a host holds up
/// the transfers.
class CurlThreads {
public:
    using Block = std::function<void()>;

    CurlThreads() = default;
    CurlThreads(const CurlThreads&) = delete;
    CurlThreads& operator=(const CurlThreads&) = delete;

    /// Starts the network thread and, with `hasCallbacks`, the callback thread, which keep `work` and this object, a
    /// part of `work`, alive until they end. Starts nothing in a process that is exiting.
    std::error_code start(const std::shared_ptr<CurlDriving>& work, bool hasCallbacks);

    /// Has a thread drive, or the driving thread look for news. Any thread.
    void wake();

    /// Puts a block behind the others for the callback thread. For the driving thread.
    void callBack(Block block);

    /// Lets the threads end after the work and the callbacks. Any thread.
    void stop();

    /// Whether `drive()` must return because a callback waits for the driving thread.
    bool mustReturn();

    bool isCallbackThread() const { return std::this_thread::get_id() == callbackThread_; }

private:
    class Member;

    void runNetwork();
    void runCallbacks();
    /// Called and left with the lock held; the lock is open while the work is driven.
    void drive(std::unique_lock<std::mutex>& lock);

    CurlDriving* work_ = nullptr;
    std::mutex mutex_;
    std::condition_variable network_;
    std::condition_variable callbacks_;
    std::vector<Block> blocks_;
    std::atomic<std::thread::id> callbackThread_;
    /// There may be something to drive.
    bool isDue_ = false;
    bool isDriven_ = false;
    bool isCallbackThreadAsleep_ = false;
    bool isStopping_ = false;
    bool isFinished_ = false;
};

} // namespace kivo::platform
