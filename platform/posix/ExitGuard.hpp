#pragma once

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace kivo::platform {

/// Something with a thread that must not outlive the libraries it uses.
class Stoppable {
public:
    virtual ~Stoppable() = default;

    /// Makes the thread end soon. Callable from any thread, more than once; does not wait.
    virtual void stop() = 0;
};

/// Keeps a process that exits with requests under way from crashing or hanging.
///
/// When the process exits, every member is stopped, no callback starts any more, and the exiting thread waits up to
/// two seconds for the members' threads and for callbacks in progress (not for one that called `exit()` itself).
class ExitGuard {
public:
    /// The process's guard.
    static ExitGuard& shared();

    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;

    /// Adds a member whose thread is about to start; false once the process is exiting.
    bool add(const std::shared_ptr<Stoppable>& member);

    /// Has the members stopped before every exit handler that was registered until now. A library whose exit handler
    /// takes away what a member's thread uses is made ready first, and this is called once after it.
    void runAheadOfHandlersSoFar();

    /// Called by the thread that works for the member, as its first and its last act.
    static void markMemberThread();
    void remove(const Stoppable* member);

    /// Holds `object` for ever: what a callback would have released must not be destroyed while the process exits.
    void keep(std::shared_ptr<void> object);

private:
    friend class CallbackScope;

    ExitGuard() = default;
    void stopAll();

    /// The process whose threads the members have: a child that was forked has none of them.
    std::atomic<pid_t> process_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::pair<const Stoppable*, std::weak_ptr<Stoppable>>> members_;
    std::vector<std::shared_ptr<void>> kept_;
    std::atomic<int> callbacks_{0};
    std::atomic<bool> exiting_{false};
};

/// Stands around every call into the host. False when the process is exiting and the call must not be made.
class CallbackScope {
public:
    CallbackScope();
    CallbackScope(const CallbackScope&) = delete;
    CallbackScope& operator=(const CallbackScope&) = delete;
    ~CallbackScope();

    explicit operator bool() const { return open_; }

private:
    ExitGuard& guard_;
    bool open_;
};

} // namespace kivo::platform
