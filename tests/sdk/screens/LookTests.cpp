// How every screen wears the theme and follows the reading size.
#include "support/HostScreenFixture.hpp"

#include <kivo/platform/ui/Label.hpp>

#include <functional>
#include <optional>

namespace kivo {
namespace {

using platform::Button;
using platform::Color;
using platform::ContentSizeCategory;
using platform::Font;
using platform::Label;
using platform::TextField;
using platform::TextStyled;
using platform::ViewController;

class Look : public test::HostScreenFixture {
protected:
    using Shower = std::function<std::shared_ptr<ViewController>(const Theme&)>;

    template <class Screen>
    Shower shower() {
        return [this](const Theme& theme) { return pushed<Screen>(theme); };
    }

    const Shower code = shower<QRCodeVC>();
    const Shower scanner = shower<QRCodeScannerVC>();
    const Shower document = shower<AuthMenuVC>();
    const Shower face = shower<LiveNessCheckVC>();
    const Shower final = shower<FinalStatusVC>();
};

TEST_F(Look, IsTheThemes) {
    const Font titleFont{.name = "Title", .pointSize = 30};
    const Font infoFont{.name = "Info", .pointSize = 15};
    const Font codeFont{.name = "Code", .pointSize = 20};
    const Font buttonFont{.name = "Button", .pointSize = 18};
    const Font optionFont{.name = "Option", .pointSize = 19};
    const auto title = Color::white(0.1);
    const auto info = Color::white(0.2);
    const auto onButton = Color::white(0.3);
    const auto underButton = Color::white(0.4);
    const auto border = Color::white(0.5);
    const auto theme = makeTheme();
    theme->enableDynamicTextSizes = false;
    theme->screenTitleFont = titleFont;
    theme->screenTitleColor = title;
    theme->descriptionInfoFont = infoFont;
    theme->screenDescriptionInfoTextColor = info;
    theme->codeTextFieldFont = codeFont;
    theme->documentOptionsTitleFont = optionFont;
    theme->primaryButtonFont = buttonFont;
    theme->primaryButtonBorderWidth = 3;
    theme->primaryButtonBorderColor = border;
    theme->codeScreenGetStartedTitle = "Welcome";
    theme->codeScreenTextfieldPlaceholder = "Your code";
    theme->codeScreenScanQRCodeButtonTitle = "Scan it";
    theme->codeScreenScanQRButtonBackgroundColor = underButton;
    theme->codeScreenScanQRButtonTitleColor = onButton;
    theme->codeScreenEnterCodeManuallyButtonTitle = "Type it";
    theme->qrScanScreenEnterManuallyButtonTitleColor = onButton;
    theme->qrScanScreenEnterManuallyButtonBackgroundColor = underButton;
    theme->selectIDTitleText = "Which document?";
    theme->selectIDPassportOptionText = "My passport";
    theme->faceScanIntroTitle = "Look here";
    theme->faceScanIntroNextButtonTitle = "Go";
    theme->faceScanIntroNextButtonBackgroundColor = underButton;
    theme->faceScanIntroNextButtonTitleColor = onButton;

    const struct {
        const Shower& show;
        const char* outlet;
        /// Null: the storyboard's, which is not empty.
        const char* text;
        Font font;
        /// Absent: not the theme's.
        std::optional<Color> color;
        std::optional<Color> background;
    } rows[] = {
        {code, "getStartedTitleLabel", "Welcome", titleFont, title, {}},
        {code, "orTitleLabel", nullptr, infoFont, info, {}},
        {code, "scanQRCodeButton", "Scan it", buttonFont, onButton, underButton},
        {code, "activationCodeTextField", "", codeFont, {}, {}},
        {scanner, "scanManuallyButton", "Type it", buttonFont, onButton, underButton},
        {document, "titleInfoLabel", "Which document?", titleFont, title, {}},
        {document, "processDescriptionTextView", nullptr, infoFont, info, {}},
        {document, "scanPassportLabel", "My passport", optionFont, {}, {}},
        {document, "scanResidentCardLabel", "Identity card", optionFont, {}, {}},
        {face, "titleInfoLabel", "Look here", titleFont, title, {}},
        {face, "processDescriptionLabel", nullptr, infoFont, info, {}},
        {face, "nextButton", "Go", buttonFont, onButton, underButton},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.outlet);
        const auto screen = row.show(theme);
        const auto view = outlet<TextStyled>(*screen, row.outlet);
        const auto label = std::dynamic_pointer_cast<Label>(view);
        const auto button = std::dynamic_pointer_cast<Button>(view);
        const auto text = label ? label->text() : button ? button->title() : "";
        EXPECT_EQ(text, row.text != nullptr ? row.text : text);
        EXPECT_TRUE(row.text != nullptr || !text.empty());
        EXPECT_EQ(view->font(), row.font);
        EXPECT_EQ(view->textColor(), row.color.value_or(view->textColor()));
        if (row.background) {
            EXPECT_EQ(view->backgroundColor(), row.background);
            EXPECT_EQ(view->layer().cornerRadius, 25);
            EXPECT_EQ(view->layer().borderWidth, 3);
            EXPECT_EQ(view->layer().borderColor, border);
        }
        EXPECT_TRUE(outlet(*screen, "closeButton")->isHidden());
    }
    EXPECT_EQ(outlet<TextField>(*code(theme), "activationCodeTextField")->placeholder(), "Your code");
    EXPECT_EQ(document(theme)->view()->viewWithTag(1)->accessibilityLabel(), "My passport");
    theme->codeTextFieldStyle = CodeTextFieldStyle::boxed;
    EXPECT_EQ(outlet<TextField>(*code(theme), "textFieldDigitSix")->font(), codeFont);
}

TEST_F(Look, FollowsTheReadingSizeWithinTheLimitsOfTheTheme) {
    struct Shown {
        const Shower& show;
        const char* title;
        double titleSizeWithoutTheme;
        std::vector<const char*> texts;
    };

    const Shown screens[] = {
        {code, "getStartedTitleLabel", 32, {"orTitleLabel", "scanQRCodeButton", "activationCodeTextField"}},
        {scanner, nullptr, 0, {"scanManuallyButton"}},
        {document, "titleInfoLabel", 32, {"processDescriptionTextView", "scanPassportLabel", "scanResidentCardLabel"}},
        {face, "titleInfoLabel", 32, {"processDescriptionLabel", "nextButton"}},
        {final, "completeTitleLabel", 22, {"closeAppInfoLabel", "backToHomeButton"}},
    };

    const std::set<std::string_view> themesButtons{"scanQRCodeButton", "scanManuallyButton", "nextButton"};
    using enum ContentSizeCategory;

    const struct {
        const char* what;
        bool hasTheme;
        bool karbonInstalled;
        /// Whether the theme follows the reading size; if not, it says so while the screen is covered.
        bool follows;
        ContentSizeCategory size;
        /// The size of the body text, which is 14, 16, 17 and 28 points at extra small, medium, large and accessibility
        /// medium.
        double text;
    } rows[] = {
        {"no theme, no fonts", false, false, true, large, 17},
        {"no theme", false, true, true, large, 17},
        {"no theme, smallest", false, true, true, extraSmall, 14},
        {"theme, no fonts", true, false, true, large, 17},
        {"theme", true, true, true, large, 17},
        {"theme, smallest", true, true, true, extraSmall, 16},
        {"theme, largest", true, true, true, accessibilityExtraExtraExtraLarge, 28},
        {"theme without reading sizes, smallest", true, true, false, extraSmall, 17},
        {"theme without reading sizes, largest", true, true, false, accessibilityExtraExtraExtraLarge, 17},
    };

    for (const auto& row : rows) {
        for (const auto& [show, title, titleSizeWithoutTheme, texts] : screens) {
            SCOPED_TRACE(std::string{row.what} + ", " + texts.front());
            fonts->installed.clear();
            if (row.karbonInstalled) {
                fonts->installed = {"Karbon-Medium", "Karbon-Regular", "Karbon-Bold"};
            }
            window->setPreferredContentSizeCategory(large);
            const auto theme = row.hasTheme ? makeTheme() : nullptr;
            const auto screen = show(theme);
            if (!row.follows) {
                theme->enableDynamicTextSizes = false;
                cover();
                pop();
            }
            window->setPreferredContentSizeCategory(row.size);
            const auto expectFont = [&](const char* name, const char* font, double size) {
                const auto shown = outlet<TextStyled>(*screen, name)->shownFont();
                EXPECT_EQ(shown.name, row.karbonInstalled ? font : "") << name;
                EXPECT_NEAR(shown.pointSize, size, 0.51) << name;
            };
            if (title != nullptr) {
                const bool isThemes = row.hasTheme && row.karbonInstalled;
                expectFont(title, "Karbon-Medium", (isThemes ? 32 : titleSizeWithoutTheme) * row.text / 17);
            }
            for (const auto* name : texts) {
                expectFont(name, row.hasTheme && themesButtons.contains(name) ? "Karbon-Bold" : "Karbon-Regular",
                           row.text);
            }
            if (const auto box = std::dynamic_pointer_cast<TextStyled>(screen->view()->find("textFieldDigitOne"))) {
                EXPECT_FALSE(box->adjustsFontForContentSizeCategory()) << "boxes keep their size";
            }
        }
    }
}

} // namespace
} // namespace kivo
