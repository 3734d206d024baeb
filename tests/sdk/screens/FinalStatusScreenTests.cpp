#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/Label.hpp>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::Button;
using platform::ContentSizeCategory;
using platform::Font;
using platform::Label;

struct Farewells final : FinalStatusVCDelegate {
    int count = 0;

    void finalStatusDidDisappear() override { ++count; }
};

class FinalStatusScreen : public test::HostScreenFixture {
protected:
    std::shared_ptr<FinalStatusVC> presented(const std::shared_ptr<ThemeCustomization>& theme) {
        auto screen = makeScreen<FinalStatusVC>("FinalStatusVC");
        screen->delegate = farewells;
        screen->themeObj = theme;
        host->present(screen, /*animated=*/true);
        settle();
        return screen;
    }

    std::shared_ptr<Farewells> farewells = std::make_shared<Farewells>();
};

TEST_F(FinalStatusScreen, TellsATenthOfASecondAfterItBeganToGo) {
    auto screen = presented(nullptr);
    ASSERT_TRUE(outlet<Button>(*screen, "backToHomeButton")->tap());
    screen->dismiss(true);
    settle();
    EXPECT_EQ(host->presentedViewController(), nullptr);
    advance(99ms);
    EXPECT_EQ(farewells->count, 0);
    const std::weak_ptr weak = screen;
    screen.reset();
    EXPECT_TRUE(weak.expired()) << "the delay does not hold the screen";
    advance(1ms);
    EXPECT_EQ(farewells->count, 1);

    presented(nullptr);
    host->dismiss(true);
    advance(100ms);
    EXPECT_EQ(farewells->count, 2) << "whoever takes it away";
}

TEST_F(FinalStatusScreen, NeedsNoStoryboard) {
    host->present(std::make_shared<FinalStatusVC>(), /*animated=*/true);
    settle();
    EXPECT_TRUE(host->presentedViewController()->view()->window());
}

TEST_F(FinalStatusScreen, SizesItsTexts) {
    struct Row {
        const char* what;
        bool hasTheme;
        bool karbonInstalled;
        ContentSizeCategory size;
        Font title;
        Font text;
    };

    using enum ContentSizeCategory;
    const auto font = [](const char* name, double size) { return Font{.name = name, .pointSize = size}; };
    const Row rows[] = {
        {"no theme", false, false, large, font("", 22), font("", 17)},
        {"no theme, with Karbon", false, true, large, font("Karbon-Medium", 22), font("Karbon-Regular", 17)},
        {"no theme, small", false, true, extraSmall, font("Karbon-Medium", 22.0 * 14 / 17), font("Karbon-Regular", 14)},
        {"theme", true, true, large, font("Karbon-Medium", 32), font("Karbon-Regular", 17)},
        {"theme, largest", true, true, accessibilityExtraExtraExtraLarge, font("Karbon-Medium", 32.0 * 28 / 17),
         font("Karbon-Regular", 28)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fonts->installed = {};
        if (row.karbonInstalled) {
            fonts->installed = {"Karbon-Medium", "Karbon-Regular"};
        }
        const auto screen = presented(row.hasTheme ? std::make_shared<ThemeCustomization>() : nullptr);
        window->setPreferredContentSizeCategory(row.size);
        const auto title = outlet<Label>(*screen, "completeTitleLabel")->shownFont();
        EXPECT_EQ(title.name, row.title.name);
        EXPECT_NEAR(title.pointSize, row.title.pointSize, 0.51);
        for (const auto* name : {"closeAppInfoLabel", "backToHomeButton"}) {
            const auto text = outlet<platform::TextStyled>(*screen, name)->shownFont();
            EXPECT_EQ(text.name, row.text.name) << name;
            EXPECT_NEAR(text.pointSize, row.text.pointSize, 0.51) << name;
        }
        host->dismiss(false);
        settle();
    }
}

} // namespace
} // namespace kivo
