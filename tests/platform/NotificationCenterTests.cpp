#include <kivo/platform/NotificationCenter.hpp>

#include <gtest/gtest.h>

namespace kivo::platform {
namespace {

TEST(NotificationCenter, CallsThoseWhoAskedForAsLongAsTheyHoldTheirObservation) {
    NotificationCenter center;
    std::string seen;
    auto first = center.addObserver(
        "changed", [&](const Notification& notification) { seen += std::any_cast<const char*>(notification.object); });
    const auto other = center.addObserver("another", [&](const Notification&) { seen += "wrong"; });
    center.post({.name = "changed", .object = "a"});
    first.reset();
    center.post({.name = "changed", .object = "b"});
    EXPECT_EQ(seen, "a");
}

TEST(NotificationCenter, AnObserverMayRemoveAnotherAndPostAgain) {
    NotificationCenter center;
    std::string seen;
    std::shared_ptr<Observation> second;
    const auto first = center.addObserver("changed", [&](const Notification&) {
        seen += '1';
        if (second) {
            second.reset();
            center.post({.name = "changed", .object = {}});
        }
    });
    second = center.addObserver("changed", [&](const Notification&) { seen += '2'; });
    center.post({.name = "changed", .object = {}});
    EXPECT_EQ(seen, "11");
}

} // namespace
} // namespace kivo::platform
