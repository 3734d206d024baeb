#include "HostLook.hpp"

#include <memory>
#include <string_view>

namespace kivo::device::app {
namespace {

using platform::Color;

/// The catalogue's colour of that name, or system blue.
Color named(std::string_view name) {
    return Color::named(name).value_or(Color::systemBlue());
}

} // namespace

const std::vector<ThemePreset>& themePresets() {
    static const std::vector<ThemePreset> presets{
        {"As it comes", [] { return std::make_shared<ThemeCustomization>(); }},
        {"One field for the code",
         [] {
             auto theme = std::make_shared<ThemeCustomization>();
             theme->codeTextFieldStyle = CodeTextFieldStyle::single;
             return theme;
         }},
        {"Square and green",
         [] {
             auto theme = std::make_shared<ThemeCustomization>();
             const Color green{.red = 0.05, .green = 0.42, .blue = 0.25};
             theme->primaryButtonCornerRadius = 4;
             theme->screenTitleColor = Color::adaptive(green, {.red = 0.45, .green = 0.85, .blue = 0.62});
             theme->codeScreenScanQRButtonBackgroundColor = green;
             theme->qrScanScreenEnterManuallyButtonBackgroundColor = green;
             theme->faceScanIntroNextButtonBackgroundColor = green;
             theme->codeScreenGetStartedTitle = "Welcome";
             return theme;
         }},
        {"Any reading size",
         [] {
             auto theme = std::make_shared<ThemeCustomization>();
             theme->minimumContentSizeCategoryLimit = platform::ContentSizeCategory::extraSmall;
             theme->maximumContentSizeCategoryLimit = platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge;
             return theme;
         }},
    };
    return presets;
}

HostColors hostColors() {
    return {.background =
                Color::adaptive({.red = 0.95, .green = 0.95, .blue = 0.97}, {.red = 0.06, .green = 0.07, .blue = 0.09}),
            .text = Color::adaptive(Color::black(), Color::white(0.93)),
            .button = Color::adaptive(Color::white(), Color::white(0.17)),
            .bar = Color::adaptive(Color::white(1, 0.92), {.red = 0.06, .green = 0.07, .blue = 0.09, .alpha = 0.92}),
            .tint = named("Kivo.PrimaryColor")};
}

} // namespace kivo::device::app
