#include <kivo/platform/NotificationCenter.hpp>

#include <gtest/gtest.h>

namespace kivo::platform {
namespace {

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
