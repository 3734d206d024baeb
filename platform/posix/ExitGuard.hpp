#pragma once

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace kivo::platform {

/// An object with a thread that must not outlive the libraries that the thread uses.
class Stoppable {
public:
    virtual ~Stoppable() = default;

    /// Makes the thread end soon, without waiting for the end. Callable from any thread, more than once.
    virtual void stop() = 0;
};

/// Keeps a process that exits with requests under way from crashing or hanging.
///
/// When the process exits, every member is stopped and no further callback starts. The exiting thread waits up to two
/// seconds for the members' threads and for callbacks in progress, except a callback that called `exit()` itself.
class ExitGuard {
public:
    /// The process's guard.
    static ExitGuard& shared();

    ExitGuard(const ExitGuard&) = delete;
    ExitGuard& operator=(const ExitGuard&) = delete;

    /// Adds a member whose thread is about to start; false once the process is exiting.
    bool add(const std::shared_ptr<Stoppable>& member);

    /// Has the members stopped before any exit handler that is registered already. Call this function once after the
    /// initialisation of a library whose exit handler frees objects that a member's thread uses.
    void runAheadOfHandlersSoFar();

    /// The member's thread calls this function first.
    static void markMemberThread();

    /// The member's thread calls this function last.
    void remove(const Stoppable* member);

    /// Holds `object` for ever. A callback that is left out would have released the object, which must not be destroyed
    /// while the process exits.
    void keep(std::shared_ptr<void> object);

private:
    friend class CallbackScope;

    ExitGuard() = default;
    void stopAll();

    /// The process that the members' threads belong to: a forked child has none of the threads.
    std::atomic<pid_t> process_{0};
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::pair<const Stoppable*, std::weak_ptr<Stoppable>>> members_;
    std::vector<std::shared_ptr<void>> kept_;
    std::atomic<int> callbacks_{0};
    std::atomic<bool> exiting_{false};
};

/// Surrounds every call into the host. False when the process is exiting and the call must not be made.
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
