#pragma once

#include <kivo/platform/DispatchQueue.hpp>
#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ReachabilityService.hpp>

#include <atomic>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace kivo {

/// The name of the notification that a monitor posts; its object is the `std::shared_ptr<Reachability>`.
inline constexpr std::string_view reachabilityChanged = "reachabilityChanged";

/// The reason why a monitor could not be made or started.
struct ReachabilityError {
    enum class Kind {
        failedToCreateWithAddress,
        failedToCreateWithHostname,
        unableToSetCallback,
        unableToSetDispatchQueue,
        unableToGetFlags,
    };

    Kind kind;
    /// The reachability service's last error number.
    std::int32_t code = 0;
    /// The target that could not be watched.
    std::variant<std::monostate, platform::SocketAddress, std::string> target;
};

/// Watches whether the network can be reached, and announces changes. Any thread.
class Reachability : public std::enable_shared_from_this<Reachability> {
public:
    enum class Connection { none, unavailable, wifi, cellular };
    /// Older names of the connections.
    enum class NetworkStatus { notReachable, reachableViaWiFi, reachableViaWWAN };
    using Created = std::expected<std::shared_ptr<Reachability>, ReachabilityError>;
    using Done = std::expected<void, ReachabilityError>;
    using Service = std::shared_ptr<platform::ReachabilityService>;
    using Queue = std::shared_ptr<platform::DispatchQueue>;
    using Change = std::function<void(Reachability&)>;

    /// Watches a target of the service. The service's changes arrive through `targetQueue`, or, where null, on a thread
    /// of the monitor. Without a `notificationQueue`, a change is announced in the block of the serial queue that finds
    /// the change; when a call reads the flags, that is the calling thread.
    static std::shared_ptr<Reachability> forReference(Service service, platform::ReachabilityService::Ref reference,
                                                      platform::QualityOfService queueQoS, Queue targetQueue,
                                                      Queue notificationQueue);
    static Created forHostname(Service service, const std::string& hostname, platform::QualityOfService queueQoS,
                               Queue targetQueue, Queue notificationQueue);
    /// Watches the connection to the internet in general.
    static Created forInternet(Service service, platform::QualityOfService queueQoS, Queue targetQueue,
                               Queue notificationQueue);

    Reachability(const Reachability&) = delete;
    Reachability& operator=(const Reachability&) = delete;
    ~Reachability();

    /// Called after a change, before the notification is posted.
    void setWhenReachable(Change change);
    void setWhenUnreachable(Change change);

    /// Starts to watch; does nothing if the monitor runs already.
    Done startNotifier();
    void stopNotifier();

    bool notifierRunning() const { return notifierRunning_; }

    /// The connection by the last flags; reads the flags if they were never read.
    Connection connection();

    bool isReachable() { return connection() != Connection::unavailable; }

    bool isReachableViaWiFi() { return connection() == Connection::wifi; }

    bool isReachableViaWWAN() { return connection() == Connection::cellular; }

    Connection currentReachabilityStatus() { return connection(); }

    std::string_view currentReachabilityString();
    std::optional<std::uint32_t> flags() const;

    static std::string_view describe(Connection connection);
    static std::string_view describe(NetworkStatus status);

    static std::string_view description() { return "unavailable flags"; }

    /// Kept for older callers; without effect.
    static constexpr bool reachableOnWWAN = true;
    static constexpr bool isRunningOnDevice = false;
    std::atomic<bool> allowsCellularConnection = true;

private:
    Reachability(Service service, platform::ReachabilityService::Ref reference, platform::QualityOfService queueQoS,
                 Queue targetQueue, Queue notificationQueue);

    Done setReachabilityFlags();
    void apply(std::uint32_t flags);
    void announce();
    void tellOfChange();
    ReachabilityError failure(ReachabilityError::Kind kind) const;

    const Service service_;
    const platform::ReachabilityService::Ref reachabilityRef_;
    const Queue notificationQueue_;
    const std::shared_ptr<platform::NotificationCenter> notificationCenter_;
    // Shared, because a callback on it may hold the last reference to this monitor.
    const std::shared_ptr<platform::SerialQueue> reachabilitySerialQueue_;
    /// Where the service delivers changes: the serial queue, reached through the target queue if there is one.
    const Queue callbackQueue_;
    std::atomic<bool> notifierRunning_ = false;
    mutable std::mutex mutex_;
    std::optional<std::uint32_t> flags_;
    Change whenReachable_;
    Change whenUnreachable_;
};

/// Held by the service for its callbacks in place of the monitor, so that the service never keeps a monitor alive.
class ReachabilityWeakifier {
public:
    explicit ReachabilityWeakifier(std::weak_ptr<Reachability> reachability)
        : reachability_{std::move(reachability)} {}

    std::shared_ptr<Reachability> reachability() const { return reachability_.lock(); }

private:
    const std::weak_ptr<Reachability> reachability_;
};

} // namespace kivo
