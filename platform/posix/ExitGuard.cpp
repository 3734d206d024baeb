#include "platform/posix/ExitGuard.hpp"

#include "platform/posix/ProcessNumber.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace kivo::platform {
namespace {

constexpr std::chrono::seconds patience{2};

thread_local bool isMemberThread = false;
thread_local int callbacksOnThisThread = 0;

} // namespace

ExitGuard& ExitGuard::shared() {
    // Never destroyed: threads that outlast the wait still use the guard.
    static ExitGuard& guard = *new ExitGuard;
    return guard;
}

bool ExitGuard::add(const std::shared_ptr<Stoppable>& member) {
    const std::scoped_lock lock{mutex_};
    if (exiting_) {
        return false;
    }
    if (process_.exchange(processNumber()) != processNumber()) {
        members_.clear();
    }
    members_.emplace_back(member.get(), member);
    return true;
}

void ExitGuard::runAheadOfHandlersSoFar() {
    // Exit handlers run in reverse order of their registration.
    std::atexit([] { shared().stopAll(); });
}

void ExitGuard::markMemberThread() {
    isMemberThread = true;
}

void ExitGuard::remove(const Stoppable* member) {
    const std::scoped_lock lock{mutex_};
    std::erase_if(members_, [member](const auto& entry) { return entry.first == member; });
    changed_.notify_all();
}

void ExitGuard::keep(std::shared_ptr<void> object) {
    const std::scoped_lock lock{mutex_};
    kept_.push_back(std::move(object));
}

void ExitGuard::stopAll() {
    if (processNumber() != process_) {
        return;
    }
    std::vector<std::shared_ptr<Stoppable>> members;
    {
        const std::scoped_lock lock{mutex_};
        if (exiting_.exchange(true)) {
            return;
        }
        for (const auto& [address, weak] : members_) {
            members.push_back(weak.lock());
        }
    }
    for (const auto& member : members) {
        if (member) {
            member->stop();
        }
    }
    const std::size_t ownMembers = isMemberThread ? 1 : 0;
    std::unique_lock lock{mutex_};
    changed_.wait_for(lock, patience,
                      [&] { return members_.size() <= ownMembers && callbacks_ <= callbacksOnThisThread; });
}

CallbackScope::CallbackScope()
    : guard_{ExitGuard::shared()} {
    // The count comes before the look at `exiting_`: either the exiting thread sees this callback and waits for it, or
    // this callback sees that the process is exiting.
    ++guard_.callbacks_;
    ++callbacksOnThisThread;
    open_ = !guard_.exiting_;
}

CallbackScope::~CallbackScope() {
    --callbacksOnThisThread;
    --guard_.callbacks_;
    if (guard_.exiting_) {
        const std::scoped_lock lock{guard_.mutex_};
        guard_.changed_.notify_all();
    }
}

} // namespace kivo::platform
