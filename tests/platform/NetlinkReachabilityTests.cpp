#include "platform/linux/LinuxParts.hpp"
#include "support/Answers.hpp"
#include "support/OwnNetwork.hpp"
#include "support/Program.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace kivo::platform {
namespace {

using test::eventually;

constexpr auto reachable = kSCNetworkReachabilityFlagsReachable;

struct ImmediateQueue final : DispatchQueue {
    void async(std::function<void()> block) override { block(); }
};

class NetlinkReachabilityTest : public test::OwnNetwork {
protected:
    ReachabilityService::Ref watched(const std::shared_ptr<DispatchQueue>& queue) {
        auto target = service->SCNetworkReachabilityCreateWithAddress({});
        const auto tell = [add = told.completion()](const auto&, std::uint32_t flags, const auto&) { add(flags); };
        EXPECT_TRUE(service->SCNetworkReachabilitySetCallback(target, tell, {}));
        EXPECT_TRUE(service->SCNetworkReachabilitySetDispatchQueue(target, queue));
        return target;
    }

    /// Whether these flags have been told in the end.
    bool tells(const std::vector<std::uint32_t>& expected) const {
        return eventually([&] {
            return std::ranges::equal(told.seen(), expected, {}, [](const auto& each) { return each.outcome; });
        });
    }

    std::shared_ptr<ReachabilityService> service = makeNetlinkReachability();
    test::Collected<std::uint32_t> told;
};

TEST_F(NetlinkReachabilityTest, IsReachableWhileADefaultRouteStands) {
    const std::pair<std::string, std::uint32_t> rows[] = {
        {"route %s default dev lo", reachable},
        {"route %s default nexthop dev lo weight 1 nexthop dev lo weight 2", reachable},
        {"-6 route %s default dev lo", reachable},
        {"route %s default dev lo table 77", 0},
        {"route %s 192.0.2.0/24 dev lo", 0},
        {"route %s blackhole default", 0},
        {"route %s unreachable default", 0},
        {"-6 route %s unreachable default", 0},
    };
    const auto target = service->SCNetworkReachabilityCreateWithName("identity.example");
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U);
    for (const auto& [route, flags] : rows) {
        const auto at = route.find("%s");
        ip(std::string{route}.replace(at, 2, "add"));
        EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), flags) << route;
        ip(std::string{route}.replace(at, 2, "del"));
        EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U) << route;
    }
    ip("route add default dev lo");
    ip("link set lo down");
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U);
#ifndef __SANITIZE_ADDRESS__ // the sanitizer itself needs descriptors
    auto noFiles = std::make_unique<test::LowLimit>(RLIMIT_NOFILE, 0);
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), std::nullopt);
    EXPECT_EQ(service->SCError(), EMFILE);
    EXPECT_FALSE(service->SCNetworkReachabilitySetDispatchQueue(target, std::make_shared<ImmediateQueue>()) &&
                 service->SCNetworkReachabilitySetCallback(target, [](auto&&...) {}, {}));
    EXPECT_EQ(service->SCError(), EMFILE);
    noFiles.reset();
#endif
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(nullptr), std::nullopt);
    EXPECT_EQ(service->SCError(), EINVAL);
}

TEST_F(NetlinkReachabilityTest, IsReachableWhileOneOfManyHopsHasALink) {
    if (std::system("ip link add a0 type veth peer name a1 2>/dev/null") != 0) {
        GTEST_SKIP() << "This kernel makes no pairs of interfaces";
    }
    ip("link add b0 type veth peer name b1");
    for (const std::string name : {"a0", "a1", "b0", "b1"}) {
        ip("link set " + name + " up");
    }
    ip("route add default nexthop dev a0 nexthop dev b0");
    const auto target = service->SCNetworkReachabilityCreateWithAddress({});
    const std::pair<const char*, std::uint32_t> rows[] = {
        {"a1 down", reachable}, {"b1 down", 0}, {"a1 up", reachable}, {"a0 down", 0}};
    for (const auto& [change, flags] : rows) {
        ip("link set " + std::string{change});
        EXPECT_TRUE(eventually([&, expected = flags] {
            return service->SCNetworkReachabilityGetFlags(target) == expected;
        })) << change;
    }
}

TEST_F(NetlinkReachabilityTest, PushesEveryChangeOnce) {
    const auto target = watched(std::make_shared<ImmediateQueue>());
    ip("route add default dev lo");
    EXPECT_TRUE(tells({reachable}));
    ip("-6 route add default dev lo");
    ip("route del default");
    ip("-6 route del default");
    EXPECT_TRUE(tells({reachable, 0}));
    ip("route add default dev lo");
    EXPECT_TRUE(tells({reachable, 0, reachable}));
    ip("link set lo down");
    EXPECT_TRUE(tells({reachable, 0, reachable, 0}));
}

TEST_F(NetlinkReachabilityTest, WatchesOnOneThreadWhileSomebodyListens) {
    const auto tell = [](const auto&, std::uint32_t, const auto&) {};
    const std::function<void(ReachabilityService::Ref&)> ends[] = {
        [&](auto& target) { service->SCNetworkReachabilitySetCallback(target, nullptr, {}); },
        [&](auto& target) { service->SCNetworkReachabilitySetDispatchQueue(target, nullptr); },
        [&](auto& target) { target.reset(); },
    };
    for (const auto& end : ends) {
        auto target = watched(std::make_shared<ImmediateQueue>());
        const auto other = service->SCNetworkReachabilityCreateWithName("identity.example");
        service->SCNetworkReachabilitySetCallback(other, tell, {});
        EXPECT_EQ(test::threadsNamed("kivo-routes"), 1);
        end(target);
        EXPECT_TRUE(eventually([&] { return test::threadsNamed("kivo-routes") == 0; }));
    }
}

TEST_F(NetlinkReachabilityTest, OutlivesItsServiceAsLongAsATargetIsHeld) {
    const auto target = watched(std::make_shared<ImmediateQueue>());
    service.reset();
    ip("route add default dev lo");
    EXPECT_TRUE(tells({reachable}));
}

TEST_F(NetlinkReachabilityTest, MissesNothingWhenNewsComeTooFast) {
    const auto target = watched(std::make_shared<ImmediateQueue>());
    const auto batch = std::filesystem::temp_directory_path() / ("kivo-routes-" + std::to_string(getpid()));
    const auto lines = "for i in $(seq 0 250); do for j in $(seq 0 15); do echo route add 10.$i.$j.0/24 dev lo; "
                       "done; done";
    ASSERT_EQ(std::system(("(" + std::string{lines} + "; echo route add default dev lo) >" + batch.string()).c_str()),
              0);
    ip("-batch " + batch.string());
    std::filesystem::remove(batch);
    EXPECT_TRUE(tells({reachable}));
}

} // namespace
} // namespace kivo::platform
