#include "platform/linux/LinuxParts.hpp"
#include "platform/ui/TextEstimate.hpp"
#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <cmath>
#include <string_view>
#include <thread>
#include <vector>

namespace kivo::platform {

void PrintTo(const Rect& rect, std::ostream* out) {
    *out << rect.left() << "," << rect.top() << " " << rect.size.width << "x" << rect.size.height;
}

namespace {

class Layout : public test::ScreenFixture {
protected:
    Layout() {
        window_->setSafeArea({});
        window_->setRootViewController(screen_);
    }

    std::shared_ptr<View> box(const Placement& placement) {
        auto made = std::make_shared<View>();
        made->setPlacement(placement);
        return made;
    }

    std::shared_ptr<ViewController> screen_ = std::make_shared<ViewController>();
};

TEST_F(Layout, PlacesAViewAfterItsEdgesItsCentreAndItsOwnSize) {
    const std::vector<std::pair<Placement, Rect>> cases{
        {{.top = 10, .left = 20, .bottom = 30, .right = 40}, {{20, 10}, {330, 804}}},
        {{.right = 10, .width = 50, .height = 20}, {{330, 0}, {50, 20}}},
        {{.bottom = 4, .centerX = 5, .width = 100, .height = 40}, {{150, 800}, {100, 40}}},
        {{.left = 300, .right = 300, .height = 5}, {{300, 0}, {0, 5}}},
        {{.left = 0, .right = 0, .minimumHeight = 44}, {{0, 0}, {390, 44}}},
        {{}, {{0, 0}, {0, 0}}},
    };
    for (const auto& [placement, frame] : cases) {
        const auto view = box(placement);
        screen_->view()->addSubview(view);
        window_->layoutIfNeeded();
        EXPECT_EQ(view->frame(), frame);
        view->removeFromSuperview();
    }
}

TEST_F(Layout, KeepsClearOfCutOutsAndTheBarUnlessToldOtherwise) {
    const auto inside = box({.top = 0, .left = 0, .bottom = 0, .right = 0});
    auto edges = inside->placement();
    edges.ignoresSafeArea = true;
    const auto overlay = box(edges);
    const auto top = std::make_shared<ViewController>();
    top->view()->addSubview(inside);
    top->view()->addSubview(overlay);
    const auto navigation = std::make_shared<NavigationController>(top);
    window_->setRootViewController(navigation);
    window_->setSafeArea({.top = 47, .left = 0, .bottom = 34, .right = 0});
    EXPECT_EQ(inside->frame(), (Rect{{0, 91}, {390, 719}}));
    EXPECT_EQ(overlay->frame(), (Rect{{0, 0}, {390, 844}}));
    navigation->setNavigationBarHidden(true);
    window_->layoutIfNeeded();
    EXPECT_EQ(inside->frame(), (Rect{{0, 47}, {390, 763}}));
}

TEST_F(Layout, StacksAndMeasuresInEachDirection) {
    using Alignment = StackView::Alignment;
    using Distribution = StackView::Distribution;
    constexpr auto row = StackView::Axis::horizontal;
    constexpr auto column = StackView::Axis::vertical;

    const struct {
        StackView::Axis axis;
        Alignment alignment;
        Distribution distribution;
        Rect first, last;
        Size fitting;
    } cases[] = {
        {row, Alignment::fill, Distribution::fill, {{3, 1}, {150, 94}}, {{163, 1}, {30, 40}}, {50, 46}},
        {row, Alignment::leading, Distribution::fill, {{3, 1}, {150, 20}}, {{163, 1}, {30, 40}}, {50, 46}},
        {row, Alignment::center, Distribution::fill, {{3, 38}, {150, 20}}, {{163, 28}, {30, 40}}, {50, 46}},
        {row, Alignment::trailing, Distribution::fill, {{3, 75}, {150, 20}}, {{163, 55}, {30, 40}}, {50, 46}},
        {row, Alignment::fill, Distribution::fillEqually, {{3, 1}, {90, 94}}, {{103, 1}, {90, 40}}, {80, 46}},
        {column, Alignment::fill, Distribution::fill, {{3, 1}, {190, 44}}, {{3, 55}, {30, 40}}, {40, 76}},
        {column, Alignment::center, Distribution::fill, {{98, 1}, {0, 44}}, {{83, 55}, {30, 40}}, {40, 76}},
        {column, Alignment::trailing, Distribution::fill, {{193, 1}, {0, 44}}, {{163, 55}, {30, 40}}, {40, 76}},
        {column, Alignment::fill, Distribution::fillEqually, {{3, 1}, {190, 42}}, {{3, 53}, {30, 42}}, {40, 96}},
    };

    for (const auto& each : cases) {
        const auto stack = std::make_shared<StackView>();
        stack->setPlacement({.top = 0, .left = 0, .width = 200, .height = 100});
        stack->setAxis(each.axis);
        stack->setAlignment(each.alignment);
        stack->setDistribution(each.distribution);
        stack->setSpacing(10);
        stack->setMargins({.top = 1, .left = 3, .bottom = 5, .right = 7});
        stack->addSubview(box({.minimumHeight = 20})); // takes the rest
        stack->addSubview(box({.width = 99, .height = 99}));
        stack->addSubview(box({.width = 30, .height = 40}));
        stack->subviews()[1]->setHidden(true);
        screen_->view()->addSubview(stack);
        window_->layoutIfNeeded();
        EXPECT_EQ(stack->subviews()[0]->frame(), each.first);
        EXPECT_EQ(stack->subviews()[2]->frame(), each.last);
        EXPECT_EQ(stack->sizeThatFits(200), each.fitting);
        stack->removeFromSuperview();
    }
}

TEST_F(Layout, FollowsATextAndAConstraintThatChange) {
    const auto stack = std::make_shared<StackView>();
    stack->setPlacement({.top = 0, .left = 0, .right = 0});
    const auto label = std::make_shared<Label>();
    const auto button = box({.width = 30, .height = 30});
    stack->addSubview(label);
    stack->addSubview(button);
    screen_->view()->addSubview(stack);
    label->setText("one line");
    window_->layoutIfNeeded();
    const auto oneLine = button->frame().top();
    EXPECT_GT(oneLine, 0);
    label->setText("a text of so many words that no display of this width could ever hold it in one line");
    window_->layoutIfNeeded();
    EXPECT_DOUBLE_EQ(button->frame().top(), 2 * oneLine);
    LayoutConstraint{button, LayoutConstraint::Attribute::height}.setConstant(90);
    window_->layoutIfNeeded();
    EXPECT_EQ(button->frame().size.height, 90);
}

TEST_F(Layout, ScrollsNoFurtherThanItsContent) {
    const auto scroll = std::make_shared<ScrollView>();
    scroll->setPlacement({.top = 0, .left = 0, .right = 0, .height = 200});
    const auto content = box({.top = 0, .left = 0, .width = 10, .height = 500});
    const auto last = box({.top = 480, .width = 10, .height = 20});
    content->addSubview(last);
    scroll->addSubview(content);
    screen_->view()->addSubview(scroll);
    scroll->scrollTo(*last);
    EXPECT_EQ(scroll->contentOffset(), 300);
    EXPECT_EQ(last->frameOnScreen().bottom(), 200);
    scroll->setContentOffset(1000);
    EXPECT_EQ(scroll->contentOffset(), 300);
    scroll->setContentOffset(-5);
    EXPECT_EQ(content->frame().top(), 0);
}

TEST_F(Layout, AViewMovedAsideForTheKeyboardStaysThere) {
    auto frame = screen_->view()->frame();
    frame.origin.y = -100;
    screen_->view()->setFrame(frame);
    screen_->view()->addSubview(box({.height = 5}));
    window_->layoutIfNeeded();
    EXPECT_EQ(screen_->view()->frame().top(), -100);
}

TEST_F(Layout, ScaledFontsFollowTheReadingSizeWithinTheLimitsAround) {
    constexpr std::array sizes{14.0, 15.0, 16.0, 17.0, 19.0, 21.0, 23.0, 28.0, 33.0, 40.0, 47.0, 53.0};
    const auto label = std::make_shared<Label>();
    label->setText("text");
    label->setFont(FontMetrics::scaledFont(Font::system(34)));
    label->setAdjustsFontForContentSizeCategory(true);
    screen_->view()->addSubview(label);
    for (int i = 0; i < static_cast<int>(sizes.size()); ++i) {
        window_->setPreferredContentSizeCategory(*fromRawValue<ContentSizeCategory>(i));
        EXPECT_DOUBLE_EQ(label->shownFont().pointSize, 2 * sizes.at(static_cast<std::size_t>(i)));
    }
    const auto largest = label->frame().size.height;
    screen_->view()->setMaximumContentSizeCategory(ContentSizeCategory::accessibilityMedium);
    window_->layoutIfNeeded();
    EXPECT_DOUBLE_EQ(label->shownFont().pointSize, 56);
    EXPECT_LT(label->frame().size.height, largest);
    label->setFont(Font::system(34));
    EXPECT_DOUBLE_EQ(label->shownFont().pointSize, 34);
}

TEST_F(Layout, ATapGoesToTheTopmostViewThatTakesIt) {
    const auto below = std::make_shared<Button>();
    below->setPlacement({.top = 0, .left = 0, .width = 100, .height = 100});
    const auto label = std::make_shared<Label>();
    label->setPlacement(below->placement());
    screen_->view()->addSubview(below);
    screen_->view()->addSubview(label);
    EXPECT_EQ(window_->hitTest({50, 50}), below);
    int taps = 0;
    screen_->view()->addTapAction([&] { ++taps; });
    EXPECT_TRUE(window_->hitTest({200, 200})->touch());
    EXPECT_TRUE(label->touch());
    EXPECT_EQ(taps, 2);
    below->setEnabled(false);
    EXPECT_FALSE(window_->hitTest({50, 50})->touch());
    EXPECT_EQ(taps, 2);
}

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
