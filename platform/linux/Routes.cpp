#include "platform/linux/Routes.hpp"

#include "platform/posix/BackgroundThread.hpp"
#include "platform/posix/Files.hpp"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

namespace kivo::platform {
namespace {

// As large as the kernel's own blocks of a dump, so that no message is cut off.
using Block = std::array<char, 32768>;

constexpr unsigned deadHop = RTNH_F_DEAD | RTNH_F_LINKDOWN;

bool isUp(unsigned interfaceIndex) {
    ifreq request{};
    const FileDescriptor socket{::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    if (!socket || !if_indextoname(interfaceIndex, request.ifr_name)) {
        return false;
    }
    return ::ioctl(socket.get(), SIOCGIFFLAGS, &request) == 0 && (request.ifr_flags & IFF_UP) != 0;
}

template <typename T>
T valueOf(const rtattr& attribute) {
    T value{};
    std::memcpy(&value, RTA_DATA(&attribute), std::min(sizeof value, std::size_t{RTA_PAYLOAD(&attribute)}));
    return value;
}

bool leadsThroughAnyHop(const rtattr& attribute) {
    const auto* hop = static_cast<const rtnexthop*>(RTA_DATA(&attribute));
    std::size_t left = RTA_PAYLOAD(&attribute);
    while (left >= sizeof *hop && hop->rtnh_len >= sizeof *hop && hop->rtnh_len <= left) {
        if ((hop->rtnh_flags & deadHop) == 0 && isUp(static_cast<unsigned>(hop->rtnh_ifindex))) {
            return true;
        }
        left -= std::min(left, static_cast<std::size_t>(RTNH_ALIGN(hop->rtnh_len)));
        hop = RTNH_NEXT(hop);
    }
    return false;
}

bool isStandingDefaultRoute(const nlmsghdr& message) {
    const auto& route = *static_cast<const rtmsg*>(NLMSG_DATA(&message));
    const bool isIp = route.rtm_family == AF_INET || route.rtm_family == AF_INET6;
    if (!isIp || route.rtm_dst_len != 0 || route.rtm_type != RTN_UNICAST || (route.rtm_flags & RTM_F_CLONED) != 0 ||
        (route.rtm_flags & deadHop) != 0) {
        return false;
    }
    std::uint32_t table = route.rtm_table;
    std::optional<bool> leadsOut;
    auto left = static_cast<std::int64_t>(RTM_PAYLOAD(&message));
    for (const auto* attribute = RTM_RTA(&route); RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left)) {
        switch (attribute->rta_type) {
        case RTA_TABLE:
            table = valueOf<std::uint32_t>(*attribute);
            break;
        case RTA_OIF:
            leadsOut = leadsOut.value_or(false) || isUp(valueOf<unsigned>(*attribute));
            break;
        case RTA_MULTIPATH:
            leadsOut = leadsOut.value_or(false) || leadsThroughAnyHop(*attribute);
            break;
        default:
            break;
        }
    }
    // A route without interface and without hops refers to a next hop object, which the kernel drops with its
    // interface.
    return table == RT_TABLE_MAIN && leadsOut.value_or(true);
}

/// Walks through all routes once. Absent when the routes changed meanwhile, so that the walk must be repeated.
std::expected<std::optional<bool>, int> walkRoutes() {
    const FileDescriptor socket{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE)};

    struct {
        nlmsghdr header{};
        rtmsg route{};
    } request;

    request.header.nlmsg_len = NLMSG_LENGTH(sizeof request.route);
    request.header.nlmsg_type = RTM_GETROUTE;
    request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    request.route.rtm_family = AF_UNSPEC;
    if (!socket || ::send(socket.get(), &request, request.header.nlmsg_len, 0) < 0) {
        return std::unexpected{errno};
    }
    bool stands = false;
    bool isInterrupted = false;
    alignas(nlmsghdr) Block block;
    for (;;) {
        const auto size = ::recv(socket.get(), block.data(), block.size(), 0);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size <= 0) {
            return std::unexpected{size < 0 ? errno : EIO};
        }
        auto left = static_cast<unsigned>(size);
        for (const auto* message = reinterpret_cast<const nlmsghdr*>(block.data()); NLMSG_OK(message, left);
             message = NLMSG_NEXT(message, left)) {
            isInterrupted = isInterrupted || (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
            if (message->nlmsg_type == NLMSG_DONE) {
                return isInterrupted ? std::nullopt : std::optional{stands};
            }
            if (message->nlmsg_type == NLMSG_ERROR) {
                return std::unexpected{-static_cast<const nlmsgerr*>(NLMSG_DATA(message))->error};
            }
            stands = stands || (message->nlmsg_type == RTM_NEWROUTE && isStandingDefaultRoute(*message));
        }
    }
}

FileDescriptor subscribe() {
    FileDescriptor socket{::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)};
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE | RTMGRP_LINK;
    const bool isBound =
        socket && ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    return isBound ? std::move(socket) : FileDescriptor{};
}

// Reads the kernel's messages away. Their content does not matter, and neither do lost messages (ENOBUFS): the routes
// are read again afterwards. False when the socket has failed.
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

struct RouteMonitor::Channel {
    FileDescriptor news;
    FileDescriptor end;
};

std::expected<bool, int> defaultRouteStands() {
    constexpr int mostWalks = 10;
    for (int walk = 0; walk < mostWalks; ++walk) {
        const auto stands = walkRoutes();
        if (!stands) {
            return std::unexpected{stands.error()};
        }
        if (*stands) {
            return **stands;
        }
    }
    return std::unexpected{EAGAIN};
}

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
