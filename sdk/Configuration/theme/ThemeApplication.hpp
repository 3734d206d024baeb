#pragma once

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>

#include <memory>
#include <optional>
#include <string>

/// How a theme reaches the controls that several screens have.
namespace kivo::ui {

/// The close button of a screen and the constraints that size it.
struct CloseButton {
    std::shared_ptr<platform::Button> button;
    std::shared_ptr<platform::LayoutConstraint> width;
    std::shared_ptr<platform::LayoutConstraint> height;
};

/// An empty text leaves the storyboard's in place; likewise for a title and for a font.
void applyText(platform::Label& label, const std::string& text);
void applyTitle(platform::Button& button, const std::string& title);
void applyFont(platform::TextStyled& text, const std::optional<platform::Font>& font);

void applyCloseButton(const CloseButton& closeButton, const ThemeCustomization& theme);

/// Outline, font and the colours given.
void applyPrimaryButton(platform::Button& button, const ThemeCustomization& theme,
                        const platform::Color& backgroundColor, const platform::Color& titleColor);

} // namespace kivo::ui
