#include "platform/linux/NetlinkReachability.hpp"

#include "support/Eventually.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kivo::platform {
namespace {

using namespace std::chrono_literals;
using test::eventually;

constexpr auto reachable = kSCNetworkReachabilityFlagsReachable;

struct ImmediateQueue final : DispatchQueue {
    void async(std::function<void()> block) override { block(); }
};

struct Seen {
    void add(std::uint32_t flags) {
        const std::scoped_lock lock{mutex};
        all.push_back(flags);
        changed.notify_all();
    }

    bool becomes(const std::vector<std::uint32_t>& expected) {
        std::unique_lock lock{mutex};
        return changed.wait_for(lock, 20s, [&] { return all == expected; });
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::uint32_t> all;
};

/// How many threads watch the routes.
std::ptrdiff_t watchers() {
    return std::ranges::count_if(std::filesystem::directory_iterator{"/proc/self/task"}, [](const auto& thread) {
        std::string name;
        std::ifstream{thread.path() / "comm"} >> name;
        return name == "kivo-routes";
    });
}

/// Has a network of its own, with nothing but a loopback interface, which begins down.
class NetlinkReachabilityTest : public testing::Test {
protected:
    void SetUp() override {
        setenv("PATH", (std::string{std::getenv("PATH")} + ":/usr/sbin:/sbin").c_str(), 1);
        home = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
            GTEST_SKIP() << "This user may not make a network namespace";
        }
        if (std::system("ip link show lo >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "The program ip is not installed";
        }
        ip("link set lo up");
    }

    void TearDown() override {
        setns(home, CLONE_NEWNET);
        close(home);
    }

    static void ip(const std::string& arguments) {
        ASSERT_EQ(std::system(("ip " + arguments).c_str()), 0) << arguments;
    }

    ReachabilityService::Ref watched(const std::shared_ptr<DispatchQueue>& queue) {
        auto target = service->SCNetworkReachabilityCreateWithAddress({});
        const auto tell = [this](const auto&, std::uint32_t flags, const auto&) { seen.add(flags); };
        EXPECT_TRUE(service->SCNetworkReachabilitySetCallback(target, tell, {}));
        EXPECT_TRUE(service->SCNetworkReachabilitySetDispatchQueue(target, queue));
        return target;
    }

    int home = -1;
    std::shared_ptr<ReachabilityService> service = makeNetlinkReachability();
    Seen seen;
};

TEST_F(NetlinkReachabilityTest, IsReachableWhileADefaultRouteStands) {
    struct Case {
        std::string route;
        std::uint32_t flags;
    };

    const auto target = service->SCNetworkReachabilityCreateWithName("identity.example");
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U);
    for (const auto& [route, flags] : {
             Case{"route %s default dev lo", reachable},
             Case{"route %s default nexthop dev lo weight 1 nexthop dev lo weight 2", reachable},
             Case{"-6 route %s default dev lo", reachable},
             Case{"route %s default dev lo table 77", 0},
             Case{"route %s 192.0.2.0/24 dev lo", 0},
             Case{"route %s blackhole default", 0},
             Case{"route %s unreachable default", 0},
             Case{"-6 route %s unreachable default", 0},
         }) {
        const auto at = route.find("%s");
        ip(std::string{route}.replace(at, 2, "add"));
        EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), flags) << route;
        ip(std::string{route}.replace(at, 2, "del"));
        EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U) << route;
    }
    ip("route add default dev lo");
    ip("link set lo down");
    EXPECT_EQ(service->SCNetworkReachabilityGetFlags(target), 0U);
}

TEST_F(NetlinkReachabilityTest, PushesEveryChangeOnce) {
    const auto target = watched(std::make_shared<ImmediateQueue>());
    ip("route add default dev lo");
    EXPECT_TRUE(seen.becomes({reachable}));
    ip("-6 route add default dev lo");
    ip("route del default");
    ip("-6 route del default");
    EXPECT_TRUE(seen.becomes({reachable, 0}));
    ip("route add default dev lo");
    EXPECT_TRUE(seen.becomes({reachable, 0, reachable}));
    ip("link set lo down");
    EXPECT_TRUE(seen.becomes({reachable, 0, reachable, 0}));
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
        EXPECT_EQ(watchers(), 1);
        end(target);
        EXPECT_TRUE(eventually([&] { return watchers() == 0; }));
    }
}

TEST_F(NetlinkReachabilityTest, OutlivesItsServiceAsLongAsATargetIsHeld) {
    const auto target = watched(std::make_shared<ImmediateQueue>());
    service.reset();
    ip("route add default dev lo");
    EXPECT_TRUE(seen.becomes({reachable}));
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
    EXPECT_TRUE(seen.becomes({reachable}));
}

} // namespace
} // namespace kivo::platform
