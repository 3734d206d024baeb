#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kivo::platform {

/// Set in the flags while the watched target can be reached.
inline constexpr std::uint32_t kSCNetworkReachabilityFlagsReachable = 2;

/// An IPv4 socket address; all zero it stands for the general internet.
struct SocketAddress {
    /// The members of the address as the network's own structure has them; 2 is the family of IPv4.
    std::uint8_t length = 16;
    std::uint8_t family = 2;
    std::uint16_t port = 0;
    std::uint32_t address = 0;

    bool operator==(const SocketAddress&) const = default;
};

/// One watched target. Releasing the last reference ends its callbacks.
class KIVO_EXPORT NetworkReachabilityRef {
public:
    virtual ~NetworkReachabilityRef() = default;
};

/// Tells whether the network can be reached, and calls back at a change. Callable from any thread.
class KIVO_EXPORT ReachabilityService {
public:
    /// A watched target.
    using Ref = std::shared_ptr<NetworkReachabilityRef>;

    /// The service retains `info` as long as the callback is set.
    struct Context {
        /// What the callback is given.
        std::shared_ptr<void> info;
    };

    /// Receives the new flags, and the context's `info`, on the queue that was set.
    using Callback = std::function<void(const Ref& target, std::uint32_t flags, const std::shared_ptr<void>& info)>;

    virtual ~ReachabilityService() = default;

    /// Null on failure; `SCError()` then gives the reason.
    virtual Ref SCNetworkReachabilityCreateWithName(const std::string& hostname) = 0;
    virtual Ref SCNetworkReachabilityCreateWithAddress(const SocketAddress& address) = 0;

    /// Sets the callback, or clears it when empty. False on failure.
    virtual bool SCNetworkReachabilitySetCallback(const Ref& target, Callback callback, Context context) = 0;

    /// Sets the queue that callbacks run on, or stops them when null. False on failure.
    virtual bool SCNetworkReachabilitySetDispatchQueue(const Ref& target, std::shared_ptr<DispatchQueue> queue) = 0;

    /// Reads the flags now; absent on failure.
    virtual std::optional<std::uint32_t> SCNetworkReachabilityGetFlags(const Ref& target) = 0;

    /// The calling thread's last error number.
    virtual std::int32_t SCError() const = 0;
};

} // namespace kivo::platform
