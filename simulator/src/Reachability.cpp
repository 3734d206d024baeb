#include <kivo/simulator/Reachability.hpp>

#include <utility>

namespace kivo::simulator {

struct Reachability::Target final : platform::NetworkReachabilityRef {
    Callback callback;
    Context context;
    std::shared_ptr<platform::DispatchQueue> queue;
};

namespace {

thread_local std::int32_t lastError = 0;

std::uint32_t flagsFor(bool reachable) {
    return reachable ? platform::kSCNetworkReachabilityFlagsReachable : 0;
}

} // namespace

Reachability::Reachability(bool reachable)
    : flags_{flagsFor(reachable)} {}

void Reachability::setReachable(bool reachable) {
    std::vector<std::pair<std::shared_ptr<platform::DispatchQueue>, std::weak_ptr<Target>>> told;
    const auto flags = flagsFor(reachable);
    {
        const std::scoped_lock lock{mutex_};
        flags_ = flags;
        for (const auto& weak : targets_) {
            if (const auto target = weak.lock(); target && target->queue && target->callback) {
                told.emplace_back(target->queue, weak);
            }
        }
    }
    for (const auto& [queue, target] : told) {
        queue->async([this, weak = target, flags] {
            const auto alive = weak.lock();
            if (!alive) {
                return;
            }
            Callback callback;
            std::shared_ptr<void> info;
            {
                const std::scoped_lock lock{mutex_};
                callback = alive->callback;
                info = alive->context.info;
            }
            if (callback) {
                callback(alive, flags, info);
            }
        });
    }
}

Reachability::Ref Reachability::SCNetworkReachabilityCreateWithName(const std::string&) {
    return create();
}

Reachability::Ref Reachability::SCNetworkReachabilityCreateWithAddress(const platform::SocketAddress&) {
    return create();
}

Reachability::Ref Reachability::create() {
    if (fails(creationError_)) {
        return nullptr;
    }
    auto target = std::make_shared<Target>();
    const std::scoped_lock lock{mutex_};
    std::erase_if(targets_, [](const auto& weak) { return weak.expired(); });
    targets_.push_back(target);
    return target;
}

bool Reachability::SCNetworkReachabilitySetCallback(const Ref& target, Callback callback, Context context) {
    if (callback && fails(callbackError_)) {
        return false;
    }
    callbacksSet_ += callback ? 1 : 0;
    auto& own = static_cast<Target&>(*target);
    const std::scoped_lock lock{mutex_};
    own.callback = std::move(callback);
    // The former context is destroyed outside the lock: its destructor may call this object.
    std::swap(own.context, context);
    return true;
}

bool Reachability::SCNetworkReachabilitySetDispatchQueue(const Ref& target,
                                                         std::shared_ptr<platform::DispatchQueue> queue) {
    if (queue && fails(queueError_)) {
        return false;
    }
    auto& own = static_cast<Target&>(*target);
    const std::scoped_lock lock{mutex_};
    std::swap(own.queue, queue);
    return true;
}

std::optional<std::uint32_t> Reachability::SCNetworkReachabilityGetFlags(const Ref&) {
    if (fails(flagsError_)) {
        return std::nullopt;
    }
    const std::scoped_lock lock{mutex_};
    return flags_;
}

std::int32_t Reachability::SCError() const {
    return lastError;
}

bool Reachability::fails(int errorNumber) const {
    lastError = errorNumber;
    return errorNumber != 0;
}

} // namespace kivo::simulator
