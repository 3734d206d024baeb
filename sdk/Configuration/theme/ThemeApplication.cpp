#include "Configuration/theme/ThemeApplication.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <utility>

namespace kivo::ui {

void applyText(platform::Label& label, const std::string& text) {
    if (!text.empty()) {
        label.setText(text);
    }
}

void applyTitle(platform::Button& button, const std::string& title) {
    if (!title.empty()) {
        button.setTitle(title);
    }
}

void applyFont(platform::TextStyled& text, const std::optional<platform::Font>& font) {
    if (font) {
        text.setFont(*font);
    }
}

void applyScreenTitle(platform::Label& label, const std::string& text, const ThemeCustomization& theme) {
    applyText(label, text);
    applyFont(label, theme.screenTitleFont);
    label.setTextColor(theme.screenTitleColor);
}

void applyDescription(platform::Label& label, const std::string& text, const ThemeCustomization& theme) {
    applyText(label, text);
    applyFont(label, theme.descriptionInfoFont);
    label.setTextColor(theme.screenDescriptionInfoTextColor);
}

void applyCloseButton(const CloseButton& closeButton, const ThemeCustomization& theme) {
    if (theme.zorCloseButtonAppearance) {
        theme.zorCloseButtonAppearance->applyAppearanceCloseButton(*closeButton.button, *closeButton.width,
                                                                   *closeButton.height);
    }
}

void applyPrimaryButton(platform::Button& button, const ThemeCustomization& theme,
                        const platform::Color& backgroundColor, const platform::Color& titleColor) {
    applyPrimaryButtonStyle(button, theme.primaryButtonBorderColor, theme.primaryButtonCornerRadius,
                            theme.primaryButtonBorderWidth);
    applyFont(button, theme.primaryButtonFont);
    button.setBackgroundColor(backgroundColor);
    button.setTextColor(titleColor);
}

} // namespace kivo::ui

namespace kivo {

void ThemeHelpers::applyTheme(const ThemeCustomization& themeObj) {
    const auto& vendor = platform::services().faceTec;
    const auto& customization = themeObj.faceVerificationUICustomization;
    if (!vendor || !customization) {
        return;
    }
    if (auto picture = platform::Image::named("FaceTec_ideal_5")) {
        customization->guidanceCustomization.retryScreenSlideshowImages = {std::move(picture)};
    }
    vendor->setCustomization(customization);
    vendor->setLowLightCustomization(customization);
}

} // namespace kivo
