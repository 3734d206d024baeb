#include "ui/Fonts.hpp"

#include <kivo/ZorCloseButtonAppearance.hpp>
#include <kivo/ui/LayerStyle.hpp>

namespace kivo {

ZorCloseButtonAppearance::ZorCloseButtonAppearance()
    : closeButtonFont{ui::namedOrSystemFont("Karbon-Bold", 17)} {}

void ZorCloseButtonAppearance::applyAppearanceCloseButton(platform::Button& closeButton,
                                                          platform::LayoutConstraint& widthConstraint,
                                                          platform::LayoutConstraint& heightConstraint) const {
    constexpr double defaultCornerRadius = 17.5;
    closeButton.setHidden(closeButtonIsHidden);
    closeButton.setTitle(closeButtonTitle);
    widthConstraint.setConstant(closeButtonWidth);
    heightConstraint.setConstant(closeButtonHeight);
    closeButton.setFont(closeButtonFont);
    if (closeButtonImage) {
        closeButton.setImage(closeButtonImage);
    }
    if (closeButtonBackGroundImage) {
        closeButton.setBackgroundImage(closeButtonBackGroundImage);
    }
    if (closeButtonBackgroundColor) {
        closeButton.setBackgroundColor(closeButtonBackgroundColor);
    }
    if (closeButtonTitleColor) {
        closeButton.setTextColor(*closeButtonTitleColor);
    }
    ui::setCornerRadiusExt(closeButton, closeButtonCornerRadius.value_or(defaultCornerRadius));
}

} // namespace kivo
