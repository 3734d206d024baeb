#pragma once

#include "platform/curl/CurlTransfer.hpp"
#include "platform/posix/ExitGuard.hpp"

#include <kivo/platform/DispatchQueue.hpp>

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace kivo::platform {

/// Drives the transfers of one session on a thread of its own, with the session's connections and cookies.
///
/// The thread keeps the engine alive. After `stop()` the thread hands every transfer to the callback queue and ends.
/// All functions except `holdUntil()` may be called from any thread and never wait for the network.
class CurlEngine final : public Stoppable {
public:
    /// `sharesConnections`: whether requests share a connection on which the server speaks HTTP/2.
    static std::shared_ptr<CurlEngine> start(std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections);

    CurlEngine(std::shared_ptr<DispatchQueue> callbacks, bool sharesConnections);
    CurlEngine(const CurlEngine&) = delete;
    CurlEngine& operator=(const CurlEngine&) = delete;
    ~CurlEngine() override;

    void add(std::shared_ptr<CurlTransfer> transfer);

    /// Ends a transfer whose `isCancelled()` is true.
    void cancel(std::shared_ptr<CurlTransfer> transfer);

    /// Gives the transfers added from now on an empty cookie jar; earlier transfers keep their jar.
    void forgetCookies();

    void stop() override;

    /// Waits, on the engine's thread inside a handshake, until `decided()` is true. `wake()` makes the thread ask
    /// again. False when the deadline passes first or the engine is to end.
    bool holdUntil(const std::function<bool()>& decided, std::chrono::steady_clock::time_point deadline);

    /// Makes the thread look at all its transfers again.
    void wake() const;

    /// Puts `block` on the session's callback queue.
    void callBack(std::function<void()> block) const { callbacks_->async(std::move(block)); }

private:
    class Loop;

    bool isStopping();

    struct Command {
        enum class What { add, cancel, forgetCookies };

        What what;
        std::shared_ptr<CurlTransfer> transfer;
    };

    struct Commands {
        std::vector<Command> list;
        bool stopping = false;
    };

    void order(Command command);

    const std::shared_ptr<DispatchQueue> callbacks_;
    const bool sharesConnections_;
    const int wakeDescriptor_;
    std::mutex mutex_;
    Commands commands_;
};

} // namespace kivo::platform
