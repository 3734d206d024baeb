#pragma once

#include "platform/curl/CurlThreads.hpp"
#include "platform/curl/CurlTransfer.hpp"

#include <kivo/platform/DispatchQueue.hpp>

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kivo::platform {

/// Drives the transfers of one session on threads of its own, with the session's connections and cookies.
///
/// The threads keep the engine alive. After `stop()` every transfer is handed to the callback queue, and the threads
/// end. All functions except `holdUntil()` may be called from any thread and never wait for the network.
class CurlEngine final : public CurlDriving {
public:
    /// The thread that drives the transfers while no callback runs.
    enum class Driver {
        callbackThread,
        /// The callback thread once there is a connection: a delegate is asked about a new connection in the middle of
        /// the handshake.
        callbackThreadWhenConnected,
        /// For a delegate that follows what is sent.
        networkThread,
    };

    /// Without `callbacks` the callbacks run on a thread of the engine's own. `sharesConnections`: whether requests
    /// share a connection on which the server speaks HTTP/2.
    static std::shared_ptr<CurlEngine> start(Driver driver, std::shared_ptr<DispatchQueue> callbacks,
                                             bool sharesConnections);

    CurlEngine(Driver driver, std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections);
    CurlEngine(const CurlEngine&) = delete;
    CurlEngine& operator=(const CurlEngine&) = delete;
    ~CurlEngine() override;

    void add(std::shared_ptr<CurlTransfer> transfer);

    /// Ends a transfer whose `isCancelled()` is true.
    void cancel(std::shared_ptr<CurlTransfer> transfer);

    /// Goes on with a transfer whose delegate has given the verdict.
    void goOn(std::shared_ptr<CurlTransfer> transfer);

    /// Gives the transfers added from now on an empty cookie jar; earlier transfers keep their jar.
    void forgetCookies();

    void stop() override;

    /// Waits, on the driving thread inside a handshake, until `decided()` is true. `goOn()` makes the thread
    /// ask again. False when the deadline passes first or the engine is to end, and at once on the callback thread.
    bool holdUntil(const std::function<bool()>& decided, std::chrono::steady_clock::time_point deadline);

    /// Puts `block` on the session's callback queue. For the driving thread.
    void callBack(std::function<void()> block);

private:
    class Loop;

    static constexpr int longPollMs = 3'600'000;
    /// In place of a wait for the wake descriptor, which the system has refused.
    static constexpr int blindPollMs = 20;

    bool drive() override;
    void finish() override;
    void interrupt() const override;

    bool sparesNetworkThread() const override {
        return driver_ == Driver::callbackThread || (driver_ == Driver::callbackThreadWhenConnected && isConnected_);
    }

    bool isStopping();

    struct Command {
        enum class What { add, cancel, goOn };

        What what;
        std::shared_ptr<CurlTransfer> transfer;
    };

    struct Commands {
        std::vector<Command> list;
        bool stopping = false;
    };

    void order(Command command);

    const Driver driver_;
    const bool sharesConnections_;
    /// Null where the callbacks run on a thread of the engine's own.
    const std::shared_ptr<DispatchQueue> callbacks_;
    CurlThreads threads_;
    /// Belongs to the driving thread.
    std::unique_ptr<Loop> loop_;
    std::atomic<bool> isConnected_ = false;
    const int wakeDescriptor_;
    std::mutex mutex_;
    Commands commands_;
    /// The cookies of the transfers added from now on; null before the first.
    std::shared_ptr<const CookieJar> jar_;
};

} // namespace kivo::platform
