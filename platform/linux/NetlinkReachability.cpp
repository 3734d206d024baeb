#include "platform/linux/NetlinkReachability.hpp"

#include "platform/linux/RouteMonitor.hpp"
#include "platform/linux/RouteTable.hpp"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <expected>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

using Ref = ReachabilityService::Ref;
using Callback = ReachabilityService::Callback;
using Context = ReachabilityService::Context;

thread_local std::int32_t lastError = 0;

bool succeeds(int errorNumber) {
    lastError = errorNumber;
    return errorNumber == 0;
}

std::expected<std::uint32_t, int> readFlags() {
    const auto stands = defaultRouteStands();
    if (!stands) {
        return std::unexpected{stands.error()};
    }
    return *stands ? kSCNetworkReachabilityFlagsReachable : 0;
}

/// All targets of a service and the monitor they share. Targets are known by their address only, so that nothing here
/// keeps one alive.
class Watches : public std::enable_shared_from_this<Watches> {
public:
    void add(const Ref& target) {
        const std::scoped_lock lock{mutex_};
        watches_[target.get()].target = target;
    }

    void remove(const NetworkReachabilityRef* target) {
        // Declared before the lock: what they hold may call back in when it goes.
        std::unique_ptr<RouteMonitor> ended;
        std::map<const NetworkReachabilityRef*, Watch>::node_type removed;
        const std::scoped_lock lock{mutex_};
        removed = watches_.extract(target);
        ended = takeUnneededMonitor();
    }

    int setCallback(const NetworkReachabilityRef* target, Callback callback, Context context) {
        return change(target, [&](Watch& watch) {
            std::swap(watch.callback, callback);
            std::swap(watch.context, context);
        });
    }

    int setQueue(const NetworkReachabilityRef* target, std::shared_ptr<DispatchQueue> queue) {
        return change(target, [&](Watch& watch) { std::swap(watch.queue, queue); });
    }

    std::expected<std::uint32_t, int> flags(const NetworkReachabilityRef* target) {
        const std::scoped_lock lock{mutex_};
        const auto flags = readFlags();
        if (auto& watch = watches_.at(target); flags && !watch.isActive()) {
            watch.told = *flags;
        }
        return flags;
    }

private:
    struct Watch {
        bool isActive() const { return callback && queue; }

        std::weak_ptr<NetworkReachabilityRef> target;
        Callback callback;
        Context context;
        std::shared_ptr<DispatchQueue> queue;
        std::optional<std::uint32_t> told;
        std::uint64_t activation = 0;
        std::uint64_t lastDelivered = 0;
    };

    struct Delivery {
        std::weak_ptr<NetworkReachabilityRef> target;
        std::uint32_t flags;
        std::uint64_t activation;
        std::uint64_t number;
    };

    /// `swap` exchanges settings of the watch for those it holds; doing so again takes the change back.
    template <typename Swap>
    int change(const NetworkReachabilityRef* target, Swap swap) {
        std::unique_ptr<RouteMonitor> ended;
        const std::scoped_lock lock{mutex_};
        auto& watch = watches_.at(target);
        const bool wasActive = watch.isActive();
        swap(watch);
        if (!wasActive && watch.isActive()) {
            if (const int error = activate(watch)) {
                swap(watch);
                return error;
            }
        } else if (wasActive && !watch.isActive()) {
            watch.told.reset();
            ++watch.activation;
            ended = takeUnneededMonitor();
        }
        return 0;
    }

    int activate(Watch& watch) {
        const auto flags = readFlags();
        if (!flags) {
            return flags.error();
        }
        // A monitor that runs already does not look again by itself, and a change that it has seen is not told twice.
        const bool isStale = watch.told && *watch.told != *flags;
        if (!monitor_ || isStale) {
            auto monitor = RouteMonitor::start([weak = weak_from_this()] {
                if (const auto alive = weak.lock()) {
                    alive->tellChanges();
                }
            });
            if (!monitor) {
                return monitor.error();
            }
            monitor_ = std::move(*monitor);
        }
        watch.told = watch.told.value_or(*flags);
        return 0;
    }

    std::unique_ptr<RouteMonitor> takeUnneededMonitor() {
        const bool isNeeded = std::ranges::any_of(watches_, [](const auto& entry) { return entry.second.isActive(); });
        return isNeeded ? nullptr : std::move(monitor_);
    }

    void tellChanges() {
        std::vector<std::pair<std::shared_ptr<DispatchQueue>, Delivery>> deliveries;
        {
            const std::scoped_lock lock{mutex_};
            const auto flags = readFlags();
            for (auto& [key, watch] : watches_) {
                if (flags && watch.isActive() && std::exchange(watch.told, *flags) != *flags) {
                    deliveries.push_back({watch.queue, {watch.target, *flags, watch.activation, ++deliveries_}});
                }
            }
        }
        for (const auto& [queue, delivery] : deliveries) {
            try {
                queue->async([weak = weak_from_this(), delivery] {
                    if (const auto alive = weak.lock()) {
                        alive->deliver(delivery);
                    }
                });
            } catch (const std::system_error&) {
                // The machine has no thread left for the queue; the next look at the routes may find one.
                forgetTold(delivery.target);
            }
        }
    }

    void forgetTold(const std::weak_ptr<NetworkReachabilityRef>& target) {
        // Declared before the lock: when it goes, its watch does.
        const auto alive = target.lock();
        const std::scoped_lock lock{mutex_};
        if (const auto found = watches_.find(alive.get()); found != watches_.end()) {
            found->second.told.reset();
        }
    }

    void deliver(const Delivery& delivery) {
        const auto target = delivery.target.lock();
        if (!target) {
            return;
        }
        Callback callback;
        std::shared_ptr<void> info;
        {
            const std::scoped_lock lock{mutex_};
            auto& watch = watches_.at(target.get());
            // A monitor that is just ending may hand over its last finding after the next one's first.
            if (watch.activation != delivery.activation || watch.lastDelivered > delivery.number) {
                return;
            }
            watch.lastDelivered = delivery.number;
            callback = watch.callback;
            info = watch.context.info;
        }
        callback(target, delivery.flags, info);
    }

    std::mutex mutex_;
    std::map<const NetworkReachabilityRef*, Watch> watches_;
    std::unique_ptr<RouteMonitor> monitor_;
    std::uint64_t deliveries_ = 0;
};

struct Target final : NetworkReachabilityRef {
    explicit Target(std::shared_ptr<Watches> owner)
        : watches{std::move(owner)} {}

    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    ~Target() override { watches->remove(this); }

    const std::shared_ptr<Watches> watches;
};

class NetlinkReachability final : public ReachabilityService {
public:
    Ref SCNetworkReachabilityCreateWithName(const std::string& hostname) override {
        return create(hostname.empty() ? EINVAL : 0);
    }

    Ref SCNetworkReachabilityCreateWithAddress(const SocketAddress& address) override {
        return create(address.family == AF_INET ? 0 : EAFNOSUPPORT);
    }

    bool SCNetworkReachabilitySetCallback(const Ref& target, Callback callback, Context context) override {
        const auto* own = dynamic_cast<const Target*>(target.get());
        return succeeds(own ? own->watches->setCallback(own, std::move(callback), std::move(context)) : EINVAL);
    }

    bool SCNetworkReachabilitySetDispatchQueue(const Ref& target, std::shared_ptr<DispatchQueue> queue) override {
        const auto* own = dynamic_cast<const Target*>(target.get());
        return succeeds(own ? own->watches->setQueue(own, std::move(queue)) : EINVAL);
    }

    std::optional<std::uint32_t> SCNetworkReachabilityGetFlags(const Ref& target) override {
        const auto* own = dynamic_cast<const Target*>(target.get());
        const auto flags = own ? own->watches->flags(own) : std::unexpected{EINVAL};
        return succeeds(flags ? 0 : flags.error()) ? std::optional{*flags} : std::nullopt;
    }

    std::int32_t SCError() const override { return lastError; }

private:
    Ref create(int errorNumber) {
        if (!succeeds(errorNumber)) {
            return nullptr;
        }
        auto target = std::make_shared<Target>(watches_);
        watches_->add(target);
        return target;
    }

    const std::shared_ptr<Watches> watches_ = std::make_shared<Watches>();
};

} // namespace

std::shared_ptr<ReachabilityService> makeNetlinkReachability() {
    return std::make_shared<NetlinkReachability>();
}

} // namespace kivo::platform
