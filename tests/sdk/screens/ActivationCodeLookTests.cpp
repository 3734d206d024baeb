#include "support/ActivationCodeScreen.hpp"

#include <vector>

namespace kivo {
namespace {

using platform::Button;
using platform::Color;
using platform::ContentSizeCategory;
using platform::Font;
using platform::Label;
using platform::TextField;
using platform::TextStyled;
using platform::View;
using test::Keys;
using Texts = std::vector<std::string>;

const Color active = Color::white(0.25);
const Color inactive = Color::white(0.75);

using ActivationCodeLook = test::ActivationCodeScreen;

TEST_F(ActivationCodeLook, ShowsTheEntryStyleOfTheTheme) {
    for (const auto& [theme, boxed] :
         {std::pair{themed(CodeTextFieldStyle::boxed), true}, std::pair{themed(CodeTextFieldStyle::single), false},
          std::pair{std::shared_ptr<ThemeCustomization>{}, false}}) {
        const auto screen = shown(theme);
        EXPECT_EQ(outlet<TextField>(*screen, "activationCodeTextField")->isVisible(), !boxed);
        EXPECT_EQ(outlet<View>(*screen, "stackViewBoxedTextfield")->isVisible(), boxed);
        EXPECT_EQ(outlet<Button>(*screen, "codeContainerButton")->isVisible(), boxed);
        EXPECT_EQ(Keys::focus(), boxed ? 1 : 0);
        pop();
    }
}

TEST_F(ActivationCodeLook, HighlightsTheBoxThatHasTheFocus) {
    addColor("Kivo.TextFieled.active.BorderColor", active);
    addColor("Kivo.TextFieled.BorderColor", inactive);
    const auto theme = themed(CodeTextFieldStyle::boxed);
    theme->boxedActivationCodeTextFieldBorderWidth = 3;
    theme->boxedActivationCodeTextFieldCornerRadius = 6;
    const auto screen = shown(theme);
    const auto highlighted = [&] {
        int found = 0;
        for (int tag = 1; tag <= 6; ++tag) {
            const auto& layer = box(*screen, tag)->layer();
            EXPECT_EQ(layer.borderWidth, 3);
            EXPECT_EQ(layer.cornerRadius, 6);
            if (layer.borderColor == active) {
                found = found * 10 + tag;
            } else {
                EXPECT_EQ(layer.borderColor, inactive);
            }
        }
        return found;
    };
    for (const auto& [key, expected] :
         std::vector<std::pair<const char*, int>>{{"1", 2}, {"@5", 5}, {"<", 4}, {"@1", 1}, {"123456", 0}, {"@2", 2}}) {
        Keys::press(*screen, key);
        EXPECT_EQ(highlighted(), expected) << "after " << key;
    }
    screen->resetActivationCodeFields();
    EXPECT_EQ(highlighted(), 1);
    EXPECT_EQ(Keys::focus(), 1);
    EXPECT_EQ(boxes(*screen), Texts(6));
}

TEST_F(ActivationCodeLook, TakesTextsAndLooksFromTheTheme) {
    const auto plain = shown(themed(CodeTextFieldStyle::boxed));
    const auto orText = outlet<Label>(*plain, "orTitleLabel")->text();
    EXPECT_NE(orText, "");
    pop();

    const auto theme = themed(CodeTextFieldStyle::boxed);
    theme->enableDynamicTextSizes = false;
    theme->codeScreenGetStartedTitle = "Welcome";
    theme->codeScreenTextfieldPlaceholder = "Your code";
    theme->codeScreenScanQRCodeButtonTitle = "Scan it";
    theme->screenTitleFont = Font{.name = "Title", .pointSize = 30};
    theme->screenTitleColor = active;
    theme->descriptionInfoFont = Font{.name = "Info", .pointSize = 15};
    theme->screenDescriptionInfoTextColor = inactive;
    theme->codeTextFieldFont = Font{.name = "Code", .pointSize = 20};
    theme->primaryButtonFont = Font{.name = "Button", .pointSize = 18};
    theme->primaryButtonBorderWidth = 1;
    theme->primaryButtonBorderColor = active;
    theme->codeScreenScanQRButtonBackgroundColor = inactive;
    theme->codeScreenScanQRButtonTitleColor = active;
    const auto screen = shown(theme);
    const auto title = outlet<Label>(*screen, "getStartedTitleLabel");
    EXPECT_EQ(title->text(), "Welcome");
    EXPECT_EQ(title->font(), *theme->screenTitleFont);
    EXPECT_EQ(title->textColor(), active);
    EXPECT_EQ(outlet<Label>(*screen, "orTitleLabel")->text(), orText) << "an empty text leaves the storyboard's";
    EXPECT_EQ(outlet<Label>(*screen, "orTitleLabel")->font(), *theme->descriptionInfoFont);
    EXPECT_EQ(outlet<Label>(*screen, "orTitleLabel")->textColor(), inactive);
    EXPECT_EQ(outlet<TextField>(*screen, "activationCodeTextField")->placeholder(), "Your code");
    EXPECT_EQ(outlet<TextField>(*screen, "activationCodeTextField")->font(), *theme->codeTextFieldFont);
    EXPECT_EQ(box(*screen, 6)->font(), *theme->codeTextFieldFont);
    const auto button = outlet<Button>(*screen, "scanQRCodeButton");
    EXPECT_EQ(button->title(), "Scan it");
    EXPECT_EQ(button->font(), *theme->primaryButtonFont);
    EXPECT_EQ(button->backgroundColor(), inactive);
    EXPECT_EQ(button->textColor(), active);
    EXPECT_EQ(button->layer().cornerRadius, 25);
    EXPECT_EQ(button->layer().borderWidth, 1);
    EXPECT_EQ(button->layer().borderColor, active);
    EXPECT_TRUE(outlet<Button>(*screen, "closeButton")->isHidden());
}

TEST_F(ActivationCodeLook, FollowsTheReadingSizeWithinTheLimits) {
    struct Row {
        const char* what;
        bool hasTheme;
        bool karbonInstalled;
        ContentSizeCategory size;
        Font title;
        Font text;
    };

    // The body text style has 14, 16, 17 and 28 points at extra small, medium, large and accessibility medium.
    const auto font = [](const char* name, double size) { return Font{.name = name, .pointSize = size}; };
    using enum ContentSizeCategory;
    const Row rows[] = {
        {"no theme", false, false, large, font("", 32), font("", 17)},
        {"no theme, smallest", false, true, extraSmall, font("Karbon-Medium", 32.0 * 14 / 17),
         font("Karbon-Regular", 14)},
        {"theme", true, true, large, font("Karbon-Medium", 32), font("Karbon-Regular", 17)},
        {"theme without Karbon", true, false, large, font("", 32), font("", 17)},
        {"theme, smallest", true, true, extraSmall, font("Karbon-Medium", 32.0 * 16 / 17), font("Karbon-Regular", 16)},
        {"theme, largest", true, true, accessibilityExtraExtraExtraLarge, font("Karbon-Medium", 32.0 * 28 / 17),
         font("Karbon-Regular", 28)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        fonts->installed = {};
        if (row.karbonInstalled) {
            fonts->installed = {"Karbon-Medium", "Karbon-Regular"};
        }
        window->setPreferredContentSizeCategory(large);
        const auto theme = row.hasTheme ? themed(CodeTextFieldStyle::single) : nullptr;
        if (theme) {
            theme->primaryButtonFont = theme->descriptionInfoFont;
        }
        const auto screen = shown(theme);
        window->setPreferredContentSizeCategory(row.size);
        const auto shows = [&](const char* name, const Font& expected) {
            const auto shown = outlet<TextStyled>(*screen, name)->shownFont();
            EXPECT_EQ(shown.name, expected.name) << name;
            EXPECT_NEAR(shown.pointSize, expected.pointSize, 0.51) << name;
        };
        shows("getStartedTitleLabel", row.title);
        shows("orTitleLabel", row.text);
        shows("scanQRCodeButton", row.text);
        shows("activationCodeTextField", row.text);
        EXPECT_FALSE(box(*screen, 1)->adjustsFontForContentSizeCategory()) << "boxes keep their size";
        pop();
    }
}

} // namespace
} // namespace kivo
