#include "NetworkManager/Reachability.hpp"

#include <utility>

namespace kivo {

using Kind = ReachabilityError::Kind;

namespace {

/// Runs its blocks through a target queue, and never at the same time as a block of the serial queue.
class TargetedQueue final : public platform::DispatchQueue {
public:
    TargetedQueue(std::shared_ptr<platform::DispatchQueue> target, std::shared_ptr<platform::SerialQueue> serial)
        : target_{std::move(target)}
        , serial_{std::move(serial)} {}

    void async(std::function<void()> block) override {
        target_->async([serial = serial_, block = std::move(block)] { serial->sync(block); });
    }

private:
    const std::shared_ptr<platform::DispatchQueue> target_;
    const std::shared_ptr<platform::SerialQueue> serial_;
};

} // namespace

std::shared_ptr<Reachability> Reachability::forReference(Service service, platform::ReachabilityService::Ref reference,
                                                         platform::QualityOfService queueQoS, Queue targetQueue,
                                                         Queue notificationQueue) {
    return std::shared_ptr<Reachability>{new Reachability{std::move(service), std::move(reference), queueQoS,
                                                          std::move(targetQueue), std::move(notificationQueue)}};
}

Reachability::Created Reachability::forHostname(Service service, const std::string& hostname,
                                                platform::QualityOfService queueQoS, Queue targetQueue,
                                                Queue notificationQueue) {
    auto reference = service->SCNetworkReachabilityCreateWithName(hostname);
    if (!reference) {
        return std::unexpected{ReachabilityError{
            .kind = Kind::failedToCreateWithHostname, .code = service->SCError(), .target = hostname}};
    }
    return forReference(std::move(service), std::move(reference), queueQoS, std::move(targetQueue),
                        std::move(notificationQueue));
}

Reachability::Created Reachability::forInternet(Service service, platform::QualityOfService queueQoS, Queue targetQueue,
                                                Queue notificationQueue) {
    constexpr platform::SocketAddress anywhere;
    auto reference = service->SCNetworkReachabilityCreateWithAddress(anywhere);
    if (!reference) {
        return std::unexpected{
            ReachabilityError{.kind = Kind::failedToCreateWithAddress, .code = service->SCError(), .target = anywhere}};
    }
    return forReference(std::move(service), std::move(reference), queueQoS, std::move(targetQueue),
                        std::move(notificationQueue));
}

Reachability::Reachability(Service service, platform::ReachabilityService::Ref reference,
                           platform::QualityOfService queueQoS, Queue targetQueue, Queue notificationQueue)
    : service_{std::move(service)}
    , reachabilityRef_{std::move(reference)}
    , notificationQueue_{std::move(notificationQueue)}
    , notificationCenter_{platform::NotificationCenter::defaultCenter()}
    , reachabilitySerialQueue_{std::make_shared<platform::SerialQueue>("dev.kivo.reachability", queueQoS)}
    , callbackQueue_{targetQueue ? std::make_shared<TargetedQueue>(std::move(targetQueue), reachabilitySerialQueue_)
                                 : Queue{reachabilitySerialQueue_}} {}

Reachability::~Reachability() {
    stopNotifier();
}

void Reachability::setWhenReachable(Change change) {
    const std::scoped_lock lock{mutex_};
    std::swap(whenReachable_, change);
}

void Reachability::setWhenUnreachable(Change change) {
    const std::scoped_lock lock{mutex_};
    std::swap(whenUnreachable_, change);
}

Reachability::Done Reachability::startNotifier() {
    if (notifierRunning_) {
        return {};
    }
    const auto deliver = [](const auto&, std::uint32_t flags, const std::shared_ptr<void>& info) {
        if (const auto monitor = std::static_pointer_cast<ReachabilityWeakifier>(info)->reachability()) {
            monitor->apply(flags);
        }
    };
    if (!service_->SCNetworkReachabilitySetCallback(reachabilityRef_, deliver,
                                                    {std::make_shared<ReachabilityWeakifier>(weak_from_this())})) {
        const auto error = failure(Kind::unableToSetCallback);
        stopNotifier();
        return std::unexpected{error};
    }
    if (!service_->SCNetworkReachabilitySetDispatchQueue(reachabilityRef_, callbackQueue_)) {
        const auto error = failure(Kind::unableToSetDispatchQueue);
        stopNotifier();
        return std::unexpected{error};
    }
    if (auto read = setReachabilityFlags(); !read) {
        return read;
    }
    notifierRunning_ = true;
    return {};
}

void Reachability::stopNotifier() {
    service_->SCNetworkReachabilitySetCallback(reachabilityRef_, nullptr, {});
    service_->SCNetworkReachabilitySetDispatchQueue(reachabilityRef_, nullptr);
    notifierRunning_ = false;
}

Reachability::Connection Reachability::connection() {
    if (!flags()) {
        std::ignore = setReachabilityFlags();
    }
    const auto known = flags().value_or(0);
    return (known & platform::kSCNetworkReachabilityFlagsReachable) != 0 ? Connection::wifi : Connection::unavailable;
}

std::string_view Reachability::currentReachabilityString() {
    return describe(connection());
}

std::optional<std::uint32_t> Reachability::flags() const {
    const std::scoped_lock lock{mutex_};
    return flags_;
}

Reachability::Done Reachability::setReachabilityFlags() {
    Done done;
    reachabilitySerialQueue_->sync([&] {
        const auto read = service_->SCNetworkReachabilityGetFlags(reachabilityRef_);
        if (read) {
            apply(*read);
            return;
        }
        done = std::unexpected{failure(Kind::unableToGetFlags)};
        stopNotifier();
    });
    return done;
}

void Reachability::apply(std::uint32_t flags) {
    {
        const std::scoped_lock lock{mutex_};
        if (std::exchange(flags_, flags) == flags) {
            return;
        }
    }
    announce();
}

void Reachability::announce() {
    if (!notificationQueue_) {
        tellOfChange();
        return;
    }
    notificationQueue_->async([weak = weak_from_this()] {
        if (const auto monitor = weak.lock()) {
            monitor->tellOfChange();
        }
    });
}

void Reachability::tellOfChange() {
    const auto change = [&] {
        const bool reachable = isReachable();
        const std::scoped_lock lock{mutex_};
        return reachable ? whenReachable_ : whenUnreachable_;
    }();
    if (change) {
        change(*this);
    }
    if (const auto self = weak_from_this().lock()) {
        notificationCenter_->post({.name = std::string{reachabilityChanged}, .object = self});
    }
}

ReachabilityError Reachability::failure(ReachabilityError::Kind kind) const {
    return {.kind = kind, .code = service_->SCError(), .target = {}};
}

std::string_view Reachability::describe(Connection connection) {
    switch (connection) {
    case Connection::none:
        return "unavailable";
    case Connection::unavailable:
        return "No Connection";
    case Connection::wifi:
        return "WiFi";
    case Connection::cellular:
        return "Cellular";
    }
    return "";
}

std::string_view Reachability::describe(NetworkStatus status) {
    switch (status) {
    case NetworkStatus::notReachable:
        return "No Connection";
    case NetworkStatus::reachableViaWiFi:
        return "WiFi";
    case NetworkStatus::reachableViaWWAN:
        return "Cellular";
    }
    return "";
}

} // namespace kivo
