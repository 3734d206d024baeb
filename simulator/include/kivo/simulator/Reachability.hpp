#pragma once

#include <kivo/platform/ReachabilityService.hpp>

#include <atomic>
#include <mutex>
#include <vector>

namespace kivo::simulator {

/// A network whose state a test sets. Install it as `platform::Services::reachability`.
class Reachability final : public platform::ReachabilityService {
public:
    /// `reachable` is the state at first.
    explicit Reachability(bool reachable = true);

    /// Changes the state. Every running monitor gets a call on its queue. Callable from any thread.
    void setReachable(bool reachable);

    /// Makes the named step fail with `errorNumber`; 0 makes the step work again.
    void failCreation(int errorNumber) { creationError_ = errorNumber; }

    /// Likewise for setting a callback.
    void failSetCallback(int errorNumber) { callbackError_ = errorNumber; }

    /// Likewise for setting a queue.
    void failSetDispatchQueue(int errorNumber) { queueError_ = errorNumber; }

    /// Likewise for reading the flags.
    void failGetFlags(int errorNumber) { flagsError_ = errorNumber; }

    /// How often a callback has been registered.
    int callbacksSet() const { return callbacksSet_; }

    /// What the SDK asks of a network.
    Ref SCNetworkReachabilityCreateWithName(const std::string& hostname) override;
    Ref SCNetworkReachabilityCreateWithAddress(const platform::SocketAddress& address) override;
    bool SCNetworkReachabilitySetCallback(const Ref& target, Callback callback, Context context) override;
    bool SCNetworkReachabilitySetDispatchQueue(const Ref& target,
                                               std::shared_ptr<platform::DispatchQueue> queue) override;
    std::optional<std::uint32_t> SCNetworkReachabilityGetFlags(const Ref& target) override;
    std::int32_t SCError() const override;

private:
    struct Target;

    Ref create();
    bool fails(int errorNumber) const;

    std::mutex mutex_;
    std::uint32_t flags_;
    std::vector<std::weak_ptr<Target>> targets_;
    std::atomic<int> creationError_ = 0;
    std::atomic<int> callbackError_ = 0;
    std::atomic<int> queueError_ = 0;
    std::atomic<int> flagsError_ = 0;
    std::atomic<int> callbacksSet_ = 0;
};

} // namespace kivo::simulator
