#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo {

/// The look of the close button on every screen. Main thread only.
///
/// Close buttons are hidden until `closeButtonIsHidden` is set to false. Lengths are in points; an absent
/// property leaves the storyboard's look, unless its comment says otherwise.
class KIVO_EXPORT ZorCloseButtonAppearance {
public:
    /// Looks up the default font.
    ZorCloseButtonAppearance();

    /// Whether screens show no close button.
    bool closeButtonIsHidden = true;
    /// The button's picture, and the picture behind its title.
    std::shared_ptr<const platform::Image> closeButtonImage;
    std::shared_ptr<const platform::Image> closeButtonBackGroundImage;
    /// The button's title; screen readers say the title, too. "Close" at first, in the person's language.
    std::string closeButtonTitle;
    /// The button's colours.
    std::optional<platform::Color> closeButtonBackgroundColor;
    std::optional<platform::Color> closeButtonTitleColor;
    /// The button's size.
    double closeButtonWidth = 75;
    double closeButtonHeight = 35;
    /// Absent means 17.5, half of the default height.
    std::optional<double> closeButtonCornerRadius;
    /// "Karbon-Bold" at 17 points, or the system font where "Karbon-Bold" is not installed.
    platform::Font closeButtonFont;

    /// Gives a screen's close button this look. The constraints set the size of the button.
    void applyAppearanceCloseButton(platform::Button& closeButton, platform::LayoutConstraint& widthConstraint,
                                    platform::LayoutConstraint& heightConstraint) const;
};

} // namespace kivo
