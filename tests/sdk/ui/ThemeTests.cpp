#include "support/HostScreenFixture.hpp"

#include <kivo/ui/LayerStyle.hpp>

namespace kivo {
namespace {

using platform::Button;
using platform::Color;
using platform::Font;
using platform::LayoutConstraint;

constexpr Color green{.red = 0, .green = 0.5, .blue = 0};

using Theme = test::HostScreenFixture;

TEST_F(Theme, DoesWithoutTheHostsColoursAndFonts) {
    const ThemeCustomization theme;
    EXPECT_EQ(theme.screenTitleColor, Color::systemBlue());
    EXPECT_EQ(theme.screenDescriptionInfoTextColor, Color::black());
    EXPECT_EQ(theme.faceScanIntroNextButtonBackgroundColor, Color::systemBlue());
    EXPECT_FALSE(theme.primaryButtonFont || theme.screenTitleFont);
    EXPECT_EQ(theme.appBundle, platform::services().bundles->main());
}

TEST_F(Theme, TakesTheColoursThatTheHostNames) {
    addColor("Kivo.Button.BackgroundColor", green);
    addColor("Kivo.HeaderTextColor", Color::white(0.25));
    addColor("Kivo.black", Color::white(0.125));
    const ThemeCustomization theme;
    for (const auto color : {&ThemeCustomization::codeScreenScanQRButtonBackgroundColor,
                             &ThemeCustomization::qrScanScreenEnterManuallyButtonBackgroundColor,
                             &ThemeCustomization::selectIDNextButtonBackgroundColor,
                             &ThemeCustomization::faceScanIntroNextButtonBackgroundColor}) {
        EXPECT_EQ(theme.*color, green);
    }
    EXPECT_EQ(theme.screenTitleColor, Color::white(0.25));
    EXPECT_EQ(theme.screenDescriptionInfoTextColor, Color::white(0.125));
}

TEST_F(Theme, TakesTheFontsThatAreInstalled) {
    fonts->installed = {"Karbon-Medium", "Karbon-Regular", "Karbon-Bold"};
    const ThemeCustomization theme;
    const Font regular{.name = "Karbon-Regular", .pointSize = 17};
    const Font bold{.name = "Karbon-Bold", .pointSize = 17};
    EXPECT_EQ(theme.screenTitleFont, (Font{.name = "Karbon-Medium", .pointSize = 32}));
    EXPECT_EQ(theme.descriptionInfoFont, regular);
    EXPECT_EQ(theme.documentOptionsTitleFont, regular);
    EXPECT_EQ(theme.codeTextFieldFont, regular);
    EXPECT_EQ(theme.primaryButtonFont, bold);
    EXPECT_EQ(theme.zorCloseButtonAppearance->closeButtonFont, bold);
}

TEST_F(Theme, GivesTheCloseButtonItsLookAndLeavesWhatIsAbsent) {
    const auto button = std::make_shared<Button>();
    button->setTextColor(green);
    button->setBackgroundColor(green);
    LayoutConstraint width{button, LayoutConstraint::Attribute::width};
    LayoutConstraint height{button, LayoutConstraint::Attribute::height};
    ZorCloseButtonAppearance appearance;
    appearance.applyAppearanceCloseButton(*button, width, height);
    EXPECT_TRUE(button->isHidden());
    EXPECT_EQ(button->title(), "Close");
    EXPECT_EQ(button->font(), Font::system(17));
    EXPECT_EQ(width.constant(), 75);
    EXPECT_EQ(height.constant(), 35);
    EXPECT_EQ(button->textColor(), green);
    EXPECT_EQ(button->backgroundColor(), green);
    EXPECT_EQ(button->image(), nullptr);
    EXPECT_EQ(ui::cornerRadiusExt(*button), 17.5);

    appearance.closeButtonIsHidden = false;
    appearance.closeButtonTitle = "";
    appearance.closeButtonHeight = 20;
    appearance.closeButtonCornerRadius = 0;
    appearance.closeButtonImage = std::make_shared<platform::Image>();
    appearance.closeButtonBackGroundImage = std::make_shared<platform::Image>();
    appearance.closeButtonBackgroundColor = Color::black();
    appearance.closeButtonTitleColor = Color::white();
    appearance.applyAppearanceCloseButton(*button, width, height);
    EXPECT_FALSE(button->isHidden());
    EXPECT_EQ(button->title(), "");
    EXPECT_EQ(height.constant(), 20);
    EXPECT_EQ(ui::cornerRadiusExt(*button), 0);
    EXPECT_FALSE(button->layer().masksToBounds);
    EXPECT_EQ(button->image(), appearance.closeButtonImage);
    EXPECT_EQ(button->backgroundImage(), appearance.closeButtonBackGroundImage);
    EXPECT_EQ(button->backgroundColor(), Color::black());
    EXPECT_EQ(button->textColor(), Color::white());
}

} // namespace
} // namespace kivo
