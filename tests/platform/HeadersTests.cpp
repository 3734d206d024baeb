#include <kivo/platform/Services.hpp>

#include <gtest/gtest.h>

namespace kivo::platform {
namespace {

TEST(PropertyValue, GivesOnlyTheTypeItHolds) {
    const PropertyValue text{"a"};
    const PropertyValue flag{true};
    EXPECT_EQ(*text.text(), "a");
    EXPECT_EQ(text.list(), nullptr);
    EXPECT_EQ(flag.text(), nullptr);
    EXPECT_TRUE(*flag.boolean());
}

} // namespace
} // namespace kivo::platform
