#include "Configuration/theme/ThemeApplication.hpp"
#include "support/VendorScreens.hpp"

#include <kivo/ui/LayerStyle.hpp>

namespace kivo {
namespace {

using platform::Button;
using platform::Color;
using platform::Font;
using platform::LayoutConstraint;

constexpr Color green{.red = 0, .green = 0.5, .blue = 0};

using HostsTheme = test::VendorScreens;

TEST_F(HostsTheme, DoesWithoutTheHostsColoursAndFonts) {
    const ThemeCustomization theme;
    EXPECT_EQ(theme.screenTitleColor, Color::systemBlue());
    EXPECT_EQ(theme.screenDescriptionInfoTextColor, Color::black());
    EXPECT_EQ(theme.faceScanIntroNextButtonBackgroundColor, Color::systemBlue());
    EXPECT_FALSE(theme.primaryButtonFont || theme.screenTitleFont);
    EXPECT_EQ(theme.appBundle, platform::services().bundles->main());
}

TEST_F(HostsTheme, TakesTheColoursThatTheHostNames) {
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

TEST_F(HostsTheme, GivesTheCloseButtonItsLookAndLeavesWhatIsAbsent) {
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

    fonts->installed = {"Karbon-Bold"};
    appearance.closeButtonFont = ZorCloseButtonAppearance{}.closeButtonFont;
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
    EXPECT_EQ(button->font(), (Font{.name = "Karbon-Bold", .pointSize = 17}));
    EXPECT_EQ(height.constant(), 20);
    EXPECT_EQ(ui::cornerRadiusExt(*button), 0);
    EXPECT_FALSE(button->layer().masksToBounds);
    EXPECT_EQ(button->image(), appearance.closeButtonImage);
    EXPECT_EQ(button->backgroundImage(), appearance.closeButtonBackGroundImage);
    EXPECT_EQ(button->backgroundColor(), Color::black());
    EXPECT_EQ(button->textColor(), Color::white());
}

TEST_F(HostsTheme, GoesToTheVendorForBothLightsWithTheHostsPictureForTheRetryScreen) {
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/Contents.json",
                 R"({"images":[{"idiom":"universal","filename":"face.png","scale":"1x"}]})");
    folder.write("Host.bundle/Host.xcassets/FaceTec_ideal_5.imageset/face.png", "picture");
    const ThemeCustomization theme;
    ThemeHelpers::applyTheme(theme);
    ASSERT_NE(scanner->customization, nullptr);
    EXPECT_EQ(scanner->customization, theme.faceVerificationUICustomization);
    EXPECT_EQ(scanner->lowLightCustomization, theme.faceVerificationUICustomization);
    const auto& pictures = scanner->customization->guidanceCustomization.retryScreenSlideshowImages;
    ASSERT_EQ(pictures.size(), 1U);
    EXPECT_EQ(pictures.front()->name, "FaceTec_ideal_5");
}

using ThemeWithoutAVendor = test::ScreensWithoutVendors;

TEST_F(ThemeWithoutAVendor, HasNothingToHandOverLater) {
    const ThemeCustomization early;
    EXPECT_EQ(early.faceVerificationUICustomization, nullptr);
    ThemeHelpers::applyTheme(early);
    const auto scanner = std::make_shared<test::ScanVendor>();
    platform::Services services;
    services.faceTec = scanner;
    platform::install(services);
    ThemeHelpers::applyTheme(early);
    EXPECT_EQ(scanner->customization, nullptr);
}

} // namespace
} // namespace kivo
