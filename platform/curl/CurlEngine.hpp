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
/// The thread keeps the engine alive and ends after `stop()`, when every transfer has been handed to the callback
/// queue. But for `holdUntil()`, all functions may be called from any thread and never wait for the network.
class CurlEngine final : public Stoppable, public std::enable_shared_from_this<CurlEngine> {
public:
    static std::shared_ptr<CurlEngine> start(std::shared_ptr<DispatchQueue> callbacks);

    explicit CurlEngine(std::shared_ptr<DispatchQueue> callbacks);
    CurlEngine(const CurlEngine&) = delete;
    CurlEngine& operator=(const CurlEngine&) = delete;
    ~CurlEngine() override;

    void add(std::shared_ptr<CurlTransfer> transfer);

    /// Ends a transfer that says of itself that it is cancelled.
    void cancel(std::shared_ptr<CurlTransfer> transfer);

    /// Gives the transfers added from now on an empty jar; the others keep theirs.
    void forgetCookies();

    void stop() override;

    /// Engine's thread, inside a handshake: waits until `decided` says so. False when the deadline passes or the engine
    /// is to end first. `wake()` has it look again.
    bool holdUntil(const std::function<bool()>& decided, std::chrono::steady_clock::time_point deadline);

    /// Has the thread look after all its transfers.
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
    const int wakeDescriptor_;
    std::mutex mutex_;
    Commands commands_;
};

} // namespace kivo::platform
