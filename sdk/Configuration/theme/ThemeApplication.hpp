#pragma once

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo {

/// Carries a theme over to the screens that the face scan vendor draws.
struct ThemeHelpers {
    /// Hands the theme's customization, the same object, to the vendor for bright and for low light. The host's image
    /// "FaceTec_ideal_5", where there is one, becomes the picture of the vendor's retry screen. Main thread, before the
    /// vendor's screens come up. Without a vendor, or with a theme that has no customization, nothing changes.
    static void applyTheme(const ThemeCustomization& themeObj);
};

} // namespace kivo

/// How a theme reaches the controls that several screens have.
namespace kivo::ui {

/// The close button of a screen and the constraints that size the button.
struct CloseButton {
    std::shared_ptr<platform::Button> button;
    std::shared_ptr<platform::LayoutConstraint> width;
    std::shared_ptr<platform::LayoutConstraint> height;
};

// An empty text or title leaves the storyboard's text in place, and an absent font the storyboard's font.
void applyText(platform::Label& label, const std::string& text);
void applyTitle(platform::Button& button, const std::string& title);
void applyFont(platform::TextStyled& text, const std::optional<platform::Font>& font);

/// Applies the text, and the theme's font and colour of screen titles.
void applyScreenTitle(platform::Label& label, const std::string& text, const ThemeCustomization& theme);

/// Applies the text, and the theme's font and colour of descriptions.
void applyDescription(platform::Label& label, const std::string& text, const ThemeCustomization& theme);

void applyCloseButton(const CloseButton& closeButton, const ThemeCustomization& theme);

/// Applies the theme's outline and font, and the colours given.
void applyPrimaryButton(platform::Button& button, const ThemeCustomization& theme,
                        const platform::Color& backgroundColor, const platform::Color& titleColor);

} // namespace kivo::ui
