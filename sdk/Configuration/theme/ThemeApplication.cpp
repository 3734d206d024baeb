#include "Configuration/theme/ThemeApplication.hpp"

#include <kivo/ui/LayerStyle.hpp>

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
