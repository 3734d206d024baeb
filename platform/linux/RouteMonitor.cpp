#include "platform/linux/RouteMonitor.hpp"

#include "platform/posix/BackgroundThread.hpp"
#include "platform/posix/FileDescriptor.hpp"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace kivo::platform {

struct RouteMonitor::Channel {
    FileDescriptor news;
    FileDescriptor end;
};

namespace {

FileDescriptor subscribe() {
    FileDescriptor socket{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)};
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_LINK;
    const bool isBound =
        socket && ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    return isBound ? std::move(socket) : FileDescriptor{};
}

// What the news say does not matter, and neither do lost ones (ENOBUFS): the routes are read anew. False when the
// socket is of no more use.
bool drain(const FileDescriptor& news) {
    std::array<char, 4096> unused;
    for (;;) {
        if (::recv(news.get(), unused.data(), unused.size(), 0) >= 0 || errno == EINTR || errno == ENOBUFS) {
            continue;
        }
        return errno == EAGAIN || errno == EWOULDBLOCK;
    }
}

} // namespace

std::expected<std::unique_ptr<RouteMonitor>, int> RouteMonitor::start(std::function<void()> changed) {
    const auto channel = std::make_shared<Channel>();
    channel->news = subscribe();
    if (!channel->news) {
        return std::unexpected{errno};
    }
    channel->end = FileDescriptor{::eventfd(0, EFD_CLOEXEC)};
    if (!channel->end) {
        return std::unexpected{errno};
    }
    const auto watch = [channel, changed = std::move(changed)] { run(*channel, changed); };
    if (const auto error = startBackgroundThread("kivo-routes", watch)) {
        return std::unexpected{error.value()};
    }
    return std::unique_ptr<RouteMonitor>{new RouteMonitor{channel}};
}

RouteMonitor::RouteMonitor(std::shared_ptr<Channel> channel)
    : channel_{std::move(channel)} {}

RouteMonitor::~RouteMonitor() {
    eventfd_write(channel_->end.get(), 1);
}

void RouteMonitor::run(const Channel& channel, const std::function<void()>& changed) {
    changed();
    std::array polled{pollfd{channel.end.get(), POLLIN, 0}, pollfd{channel.news.get(), POLLIN, 0}};
    for (;;) {
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            return;
        }
        if (polled[0].revents != 0 || !drain(channel.news)) {
            return;
        }
        changed();
    }
}

} // namespace kivo::platform
