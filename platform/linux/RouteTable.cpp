#include "platform/linux/RouteTable.hpp"

#include "platform/posix/FileDescriptor.hpp"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>

namespace kivo::platform {
namespace {

// As large as the kernel's own dump blocks, so that nothing is cut off.
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
    // Without either the route refers to a next hop object, which the kernel drops together with its interface.
    return table == RT_TABLE_MAIN && leadsOut.value_or(true);
}

/// One walk through all routes; absent when they changed meanwhile and the walk must start over.
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

} // namespace

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

} // namespace kivo::platform
