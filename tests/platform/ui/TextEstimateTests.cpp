#include "platform/ui/TextEstimate.hpp"

#include "platform/linux/LinuxParts.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <string_view>
#include <thread>
#include <vector>

namespace kivo::platform {
namespace {

long linesOf(std::string_view text, double limit) {
    return std::lround(estimateText(text, 10, limit).height / 12);
}

TEST(TextEstimate, BreaksLinesBetweenWordsAndInsideOverlongOnes) {
    EXPECT_EQ(linesOf("one two", 100), 1);
    EXPECT_EQ(linesOf("one\ntwo\n", 100), 3);
    const auto word = estimateText("word", 10, 1000).width;
    EXPECT_EQ(linesOf("wordwordword", word + 1), 3);
    EXPECT_EQ(linesOf("漢字漢字", 20), 2);
}

TEST(TextEstimate, KnowsWhereNoLineBreaks) {
    using testing::ElementsAre;
    EXPECT_THAT(unbrokenParts(" one  two\nthree"), ElementsAre("one", "two", "three"));
    EXPECT_THAT(unbrokenParts("ab漢字cd\xFF"), ElementsAre("ab", "漢", "字", "cd\xFF"));
}

TEST(TextEstimate, GivesEachKindOfCharacterItsWidth) {
    const auto width = [](std::string_view text) { return estimateText(text, 10, 1000).width; };
    EXPECT_LT(width("i"), width("n"));
    EXPECT_LT(width("n"), width("M"));
    EXPECT_DOUBLE_EQ(width("漢"), 10);
    EXPECT_DOUBLE_EQ(width("e\u0301"), width("e"));
    EXPECT_GT(width("\xFF\xC3"), 0);
}

TEST(FontconfigFontsConcurrency, TakesNoOtherFontForAMissingOne) {
    const auto fonts = makeFontconfigFonts();
    std::atomic<int> right = 0;
    {
        std::vector<std::jthread> threads;
        for (const std::string_view name : {"No Such Typeface", "", "DejaVu Sans", "DejaVuSans"}) {
            threads.emplace_back(
                [&, name] { right += fonts->isInstalled(name) == name.starts_with("DejaVu") ? 1 : 0; });
        }
    }
    EXPECT_EQ(right, 4);
}

} // namespace
} // namespace kivo::platform
