#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

namespace kivo::simulator {
namespace {

struct ImmediateQueue final : platform::DispatchQueue {
    void async(std::function<void()> block) override { block(); }
};

TEST(SimulatedReachability, TellsRunningMonitorsOnly) {
    Reachability network{true};
    const auto target = network.SCNetworkReachabilityCreateWithAddress({});
    std::vector<std::uint32_t> seen;
    network.SCNetworkReachabilitySetCallback(
        target, [&](const auto&, std::uint32_t flags, const auto&) { seen.push_back(flags); }, {});
    network.setReachable(false);
    EXPECT_TRUE(seen.empty());
    network.SCNetworkReachabilitySetDispatchQueue(target, std::make_shared<ImmediateQueue>());
    network.setReachable(true);
    network.setReachable(false);
    network.SCNetworkReachabilitySetCallback(target, nullptr, {});
    network.setReachable(true);
    EXPECT_EQ(seen, (std::vector<std::uint32_t>{2, 0}));
    EXPECT_EQ(network.SCNetworkReachabilityGetFlags(target), 2U);
}

} // namespace
} // namespace kivo::simulator
