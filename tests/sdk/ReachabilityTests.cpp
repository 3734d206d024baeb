#include "NetworkManager/Reachability.hpp"

#include "support/Eventually.hpp"

#include <kivo/platform/RunLoop.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <gtest/gtest.h>

#include <thread>
#include <tuple>

namespace kivo {
namespace {

using Kind = ReachabilityError::Kind;

class ReachabilityMonitor : public ::testing::Test {
protected:
    std::shared_ptr<Reachability> make(Reachability::Queue notificationQueue, Reachability::Queue targetQueue = {}) {
        return *Reachability::forInternet(service, platform::QualityOfService::standard, std::move(targetQueue),
                                          std::move(notificationQueue));
    }

    std::shared_ptr<simulator::Reachability> service = std::make_shared<simulator::Reachability>();
    std::shared_ptr<platform::RunLoop> loop =
        std::make_shared<platform::RunLoop>(std::make_shared<platform::ManualClock>());
};

TEST_F(ReachabilityMonitor, ReadsTheFlagsWhenAskedAndKeepsThem) {
    const auto monitor = make(loop);
    EXPECT_EQ(monitor->connection(), Reachability::Connection::wifi);
    EXPECT_EQ(monitor->currentReachabilityString(), "WiFi");
    service->setReachable(false);
    EXPECT_TRUE(monitor->isReachable()) << "not started, so not told";
    const auto later = make(loop);
    EXPECT_EQ(later->connection(), Reachability::Connection::unavailable);
    EXPECT_EQ(later->currentReachabilityString(), "No Connection");
    EXPECT_FALSE(later->isReachableViaWWAN());
}

TEST_F(ReachabilityMonitor, AnnouncesEachChangeOnce) {
    const auto monitor = make(loop);
    std::string seen;
    monitor->setWhenReachable([&](Reachability&) { seen += 'r'; });
    monitor->setWhenUnreachable([&](Reachability&) { seen += 'u'; });
    const auto observation = platform::NotificationCenter::defaultCenter()->addObserver(
        std::string{reachabilityChanged}, [&](const platform::Notification& notification) {
            EXPECT_EQ(std::any_cast<std::shared_ptr<Reachability>>(notification.object), monitor);
            seen += 'n';
        });
    ASSERT_TRUE(monitor->startNotifier());
    ASSERT_TRUE(monitor->startNotifier());
    EXPECT_EQ(service->callbacksSet(), 1);
    loop->drain();
    EXPECT_EQ(seen, "rn") << "the first reading is a change";
    service->setReachable(false);
    EXPECT_TRUE(loop->runUntil([&] { return seen == "rnun"; }, std::chrono::seconds{10})) << seen;
    service->setReachable(false);
    service->setReachable(true);
    EXPECT_TRUE(loop->runUntil([&] { return seen == "rnunrn"; }, std::chrono::seconds{10})) << seen;
    monitor->stopNotifier();
    EXPECT_FALSE(monitor->notifierRunning());
    service->setReachable(false);
    loop->drain();
    EXPECT_EQ(seen, "rnunrn");
}

TEST_F(ReachabilityMonitor, HearsTheNewsThroughItsTargetQueue) {
    const auto monitor = make(nullptr, loop);
    ASSERT_TRUE(monitor->startNotifier());
    service->setReachable(false);
    EXPECT_TRUE(monitor->isReachable()) << "the target queue has not run";
    loop->drain();
    EXPECT_FALSE(monitor->isReachable());
}

TEST_F(ReachabilityMonitor, StartFailuresLeaveItStopped) {
    const std::pair<void (simulator::Reachability::*)(int), Kind> rows[] = {
        {&simulator::Reachability::failSetCallback, Kind::unableToSetCallback},
        {&simulator::Reachability::failSetDispatchQueue, Kind::unableToSetDispatchQueue},
        {&simulator::Reachability::failGetFlags, Kind::unableToGetFlags},
    };
    for (const auto& [fail, kind] : rows) {
        ((*service).*fail)(5);
        const auto monitor = make(loop);
        const auto started = monitor->startNotifier();
        ASSERT_FALSE(started);
        EXPECT_EQ(started.error().kind, kind);
        EXPECT_EQ(started.error().code, 5);
        EXPECT_FALSE(monitor->notifierRunning());
        ((*service).*fail)(0);
        EXPECT_TRUE(monitor->startNotifier());
    }
    service->failCreation(7);
    const auto byName =
        Reachability::forHostname(service, "id.example", platform::QualityOfService::standard, nullptr, nullptr);
    ASSERT_FALSE(byName);
    EXPECT_EQ(byName.error().kind, Kind::failedToCreateWithHostname);
    EXPECT_EQ(std::get<std::string>(byName.error().target), "id.example");
    const auto internet = Reachability::forInternet(service, platform::QualityOfService::standard, nullptr, nullptr);
    ASSERT_FALSE(internet);
    EXPECT_EQ(internet.error().code, 7);
    EXPECT_EQ(std::get<platform::SocketAddress>(internet.error().target), platform::SocketAddress{});
}

TEST_F(ReachabilityMonitor, IsNotKeptAliveByTheServiceOrThePendingNews) {
    auto monitor = make(loop);
    bool told = false;
    monitor->setWhenReachable([&](Reachability&) { told = true; });
    ASSERT_TRUE(monitor->startNotifier());
    const std::weak_ptr<Reachability> weak = monitor;
    monitor.reset();
    EXPECT_TRUE(weak.expired());
    service->setReachable(false);
    loop->drain();
    EXPECT_FALSE(told);
}

TEST_F(ReachabilityMonitor, ConcurrencyOfChangesQuestionsAndRestarts) {
    auto monitor = make(nullptr);
    const auto wakeTheTest = [&](Reachability&) { loop->async([] {}); };
    monitor->setWhenReachable(wakeTheTest);
    monitor->setWhenUnreachable(wakeTheTest);
    {
        const std::jthread switching{[&] {
            for (int i = 0; i < 300; ++i) {
                service->setReachable(i % 2 == 0);
            }
        }};
        for (int i = 0; i < 300; ++i) {
            std::ignore = monitor->startNotifier();
            std::ignore = monitor->isReachable();
            if (i % 7 == 0) {
                monitor->stopNotifier();
            }
        }
    }
    ASSERT_TRUE(monitor->startNotifier());
    for (const bool isReachable : {false, true}) {
        service->setReachable(isReachable);
        EXPECT_TRUE(loop->runUntil([&] { return monitor->isReachable() == isReachable; }, std::chrono::seconds{10}));
    }
    // The queue of the monitor may still be telling of the last change.
    const std::weak_ptr<Reachability> weak = std::exchange(monitor, nullptr);
    EXPECT_TRUE(test::eventually([&] { return weak.expired(); }));
}

} // namespace
} // namespace kivo
