#pragma once

#include <expected>
#include <functional>
#include <memory>

namespace kivo::platform {

/// Whether the main routing table holds an IPv4 or IPv6 default route through an interface that is up. The error is an
/// error number of the kernel.
std::expected<bool, int> defaultRouteStands();

/// Watches the kernel's routes and interfaces on a thread of its own, which ends with the monitor.
class RouteMonitor {
public:
    /// Calls `changed` on the thread: once at first, then whenever routes or interfaces may have changed. The
    /// destructor does not wait for a call in progress. The error is an error number.
    static std::expected<std::unique_ptr<RouteMonitor>, int> start(std::function<void()> changed);

    RouteMonitor(const RouteMonitor&) = delete;
    RouteMonitor& operator=(const RouteMonitor&) = delete;
    ~RouteMonitor();

private:
    struct Channel;

    explicit RouteMonitor(std::shared_ptr<Channel> channel);

    static void run(const Channel& channel, const std::function<void()>& changed);

    std::shared_ptr<Channel> channel_;
};

} // namespace kivo::platform
