#include "c/ThemeProperties.hpp"

#include "platform/c/Guarded.hpp"

#include <kivo/ZorCloseButtonAppearance.hpp>

namespace kivo::c {
namespace {

ZorCloseButtonAppearance& closeButton(ThemeCustomization& theme) {
    if (!theme.zorCloseButtonAppearance) {
        throw Misuse{"the theme has no look of the close buttons"};
    }
    return *theme.zorCloseButtonAppearance;
}

platform::readid::UIResources& documentScreens() {
    return *ThemeCustomization::passportScanViewCustomization();
}

constexpr ThemeProperty properties[] = {
    {"enableDynamicTextSizes", [](ThemeCustomization& theme) -> Place { return &theme.enableDynamicTextSizes; }},
    {"minimumContentSizeCategoryLimit",
     [](ThemeCustomization& theme) -> Place { return &theme.minimumContentSizeCategoryLimit; }},
    {"maximumContentSizeCategoryLimit",
     [](ThemeCustomization& theme) -> Place { return &theme.maximumContentSizeCategoryLimit; }},
    {"enableActivityIndicator", [](ThemeCustomization& theme) -> Place { return &theme.enableActivityIndicator; }},
    {"screenTitleFont", [](ThemeCustomization& theme) -> Place { return &theme.screenTitleFont; }},
    {"screenTitleColor", [](ThemeCustomization& theme) -> Place { return &theme.screenTitleColor; }},
    {"descriptionInfoFont", [](ThemeCustomization& theme) -> Place { return &theme.descriptionInfoFont; }},
    {"screenDescriptionInfoTextColor",
     [](ThemeCustomization& theme) -> Place { return &theme.screenDescriptionInfoTextColor; }},
    {"primaryButtonFont", [](ThemeCustomization& theme) -> Place { return &theme.primaryButtonFont; }},
    {"primaryButtonCornerRadius", [](ThemeCustomization& theme) -> Place { return &theme.primaryButtonCornerRadius; }},
    {"primaryButtonBorderColor", [](ThemeCustomization& theme) -> Place { return &theme.primaryButtonBorderColor; }},
    {"primaryButtonBorderWidth", [](ThemeCustomization& theme) -> Place { return &theme.primaryButtonBorderWidth; }},
    {"codeTextFieldStyle", [](ThemeCustomization& theme) -> Place { return &theme.codeTextFieldStyle; }},
    {"codeScreenGetStartedTitle", [](ThemeCustomization& theme) -> Place { return &theme.codeScreenGetStartedTitle; }},
    {"codeScreenTextfieldPlaceholder",
     [](ThemeCustomization& theme) -> Place { return &theme.codeScreenTextfieldPlaceholder; }},
    {"codeScreenOrText", [](ThemeCustomization& theme) -> Place { return &theme.codeScreenOrText; }},
    {"codeScreenScanQRCodeButtonTitle",
     [](ThemeCustomization& theme) -> Place { return &theme.codeScreenScanQRCodeButtonTitle; }},
    {"codeScreenScanQRButtonTitleColor",
     [](ThemeCustomization& theme) -> Place { return &theme.codeScreenScanQRButtonTitleColor; }},
    {"codeScreenScanQRButtonBackgroundColor",
     [](ThemeCustomization& theme) -> Place { return &theme.codeScreenScanQRButtonBackgroundColor; }},
    {"codeTextFieldFont", [](ThemeCustomization& theme) -> Place { return &theme.codeTextFieldFont; }},
    {"boxedActivationCodeTextFieldCornerRadius",
     [](ThemeCustomization& theme) -> Place { return &theme.boxedActivationCodeTextFieldCornerRadius; }},
    {"boxedActivationCodeTextFieldBorderWidth",
     [](ThemeCustomization& theme) -> Place { return &theme.boxedActivationCodeTextFieldBorderWidth; }},
    {"codeScreenEnterCodeManuallyButtonTitle",
     [](ThemeCustomization& theme) -> Place { return &theme.codeScreenEnterCodeManuallyButtonTitle; }},
    {"qrScanScreenEnterManuallyButtonTitleColor",
     [](ThemeCustomization& theme) -> Place { return &theme.qrScanScreenEnterManuallyButtonTitleColor; }},
    {"qrScanScreenEnterManuallyButtonBackgroundColor",
     [](ThemeCustomization& theme) -> Place { return &theme.qrScanScreenEnterManuallyButtonBackgroundColor; }},
    {"selectIDTitleText", [](ThemeCustomization& theme) -> Place { return &theme.selectIDTitleText; }},
    {"selectIDDescriptionText", [](ThemeCustomization& theme) -> Place { return &theme.selectIDDescriptionText; }},
    {"selectIDPassportOptionText",
     [](ThemeCustomization& theme) -> Place { return &theme.selectIDPassportOptionText; }},
    {"selectIDResidentCardOptionText",
     [](ThemeCustomization& theme) -> Place { return &theme.selectIDResidentCardOptionText; }},
    {"selectIDOtherCardOptionText",
     [](ThemeCustomization& theme) -> Place { return &theme.selectIDOtherCardOptionText; }},
    {"selectIDNextButtonTitle", [](ThemeCustomization& theme) -> Place { return &theme.selectIDNextButtonTitle; }},
    {"selectIDNextButtonBackgroundColor",
     [](ThemeCustomization& theme) -> Place { return &theme.selectIDNextButtonBackgroundColor; }},
    {"documentOptionsTitleFont", [](ThemeCustomization& theme) -> Place { return &theme.documentOptionsTitleFont; }},
    {"allowNFCSkipReadingAfterAttempts",
     [](ThemeCustomization& theme) -> Place { return &theme.allowNFCSkipReadingAfterAttempts; }},
    {"faceScanIntroTitle", [](ThemeCustomization& theme) -> Place { return &theme.faceScanIntroTitle; }},
    {"faceScanIntroDescription", [](ThemeCustomization& theme) -> Place { return &theme.faceScanIntroDescription; }},
    {"faceScanIntroNextButtonTitle",
     [](ThemeCustomization& theme) -> Place { return &theme.faceScanIntroNextButtonTitle; }},
    {"faceScanIntroNextButtonTitleColor",
     [](ThemeCustomization& theme) -> Place { return &theme.faceScanIntroNextButtonTitleColor; }},
    {"faceScanIntroNextButtonBackgroundColor",
     [](ThemeCustomization& theme) -> Place { return &theme.faceScanIntroNextButtonBackgroundColor; }},
    {"faceScanUploadMessage", [](ThemeCustomization& theme) -> Place { return &theme.faceScanUploadMessage; }},
    {"faceScanSuccessMessageText",
     [](ThemeCustomization& theme) -> Place { return &theme.faceScanSuccessMessageText; }},
    {"zorCloseButtonAppearance.closeButtonIsHidden",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonIsHidden; }},
    {"zorCloseButtonAppearance.closeButtonTitle",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonTitle; }},
    {"zorCloseButtonAppearance.closeButtonBackgroundColor",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonBackgroundColor; }},
    {"zorCloseButtonAppearance.closeButtonTitleColor",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonTitleColor; }},
    {"zorCloseButtonAppearance.closeButtonWidth",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonWidth; }},
    {"zorCloseButtonAppearance.closeButtonHeight",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonHeight; }},
    {"zorCloseButtonAppearance.closeButtonCornerRadius",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonCornerRadius; }},
    {"zorCloseButtonAppearance.closeButtonFont",
     [](ThemeCustomization& theme) -> Place { return &closeButton(theme).closeButtonFont; }},
    {"passportScanViewCustomization.customStringTableName",
     [](ThemeCustomization&) -> Place { return &documentScreens().customStringTableName; }},
    {"passportScanViewCustomization.textSize",
     [](ThemeCustomization&) -> Place { return &documentScreens().textSize; }},
    {"passportScanViewCustomization.buttonFont",
     [](ThemeCustomization&) -> Place { return &documentScreens().buttonFont; }},
    {"passportScanViewCustomization.titleFont",
     [](ThemeCustomization&) -> Place { return &documentScreens().titleFont; }},
    {"passportScanViewCustomization.textFont",
     [](ThemeCustomization&) -> Place { return &documentScreens().textFont; }},
    {"passportScanViewCustomization.buttonTextSize",
     [](ThemeCustomization&) -> Place { return &documentScreens().buttonTextSize; }},
    {"passportScanViewCustomization.buttonHeight",
     [](ThemeCustomization&) -> Place { return &documentScreens().buttonHeight; }},
    {"passportScanViewCustomization.buttonCornerRadius",
     [](ThemeCustomization&) -> Place { return &documentScreens().buttonCornerRadius; }},
    {"passportScanViewCustomization.isDynamicTypeEnabled",
     [](ThemeCustomization&) -> Place { return &documentScreens().isDynamicTypeEnabled; }},
};

} // namespace

std::span<const ThemeProperty> themeProperties() {
    return properties;
}

} // namespace kivo::c
