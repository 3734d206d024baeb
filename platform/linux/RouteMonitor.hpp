#pragma once

#include <expected>
#include <functional>
#include <memory>

namespace kivo::platform {

/// Watches the kernel's routes and interfaces on a thread of its own, which ends when this goes.
class RouteMonitor {
public:
    /// Calls `changed` on the thread: once at first, and whenever something may have changed since the last call. A
    /// call under way when the monitor goes is not waited for. An error number when watching cannot begin.
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
