#include "Configuration/theme/ReadingSize.hpp"
#include "platform/base/Process.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/ZorCloseButtonAppearance.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <atomic>
#include <string_view>

namespace kivo {
namespace {

using platform::Color;
using platform::Font;

Color catalogueColor(std::string_view name, const Color& otherwise) {
    return Color::named(name).value_or(otherwise);
}

std::shared_ptr<platform::FaceTecCustomization> vendorDefaults() {
    const auto& vendor = platform::services().faceTec;
    return vendor ? vendor->makeCustomization() : nullptr;
}

std::shared_ptr<platform::readid::UIResources> vendorResources() {
    const auto& vendor = platform::services().readID;
    auto resources = vendor ? vendor->makeUIResources() : nullptr;
    return resources ? resources : std::make_shared<platform::readid::UIResources>();
}

std::atomic<DocumentListConfigurationStatus>& listStatus() {
    using Status = std::atomic<DocumentListConfigurationStatus>;
    return platform::Process::current().part<Status>(
        [] { return new Status{DocumentListConfigurationStatus::notConfigured}; });
}

} // namespace

ThemeCustomization::ThemeCustomization()
    : appBundle{platform::services().bundles->main()}
    , zorCloseButtonAppearance{std::make_shared<ZorCloseButtonAppearance>()}
    , screenTitleFont{Font::named("Karbon-Medium", 32)}
    , screenTitleColor{catalogueColor("Kivo.HeaderTextColor", Color::systemBlue())}
    , descriptionInfoFont{Font::named("Karbon-Regular", 17)}
    , screenDescriptionInfoTextColor{catalogueColor("Kivo.black", Color::black())}
    , primaryButtonFont{Font::named("Karbon-Bold", 17)}
    , codeScreenScanQRButtonBackgroundColor{catalogueColor("Kivo.Button.BackgroundColor", Color::systemBlue())}
    , codeTextFieldFont{descriptionInfoFont}
    , qrScanScreenEnterManuallyButtonBackgroundColor{codeScreenScanQRButtonBackgroundColor}
    , selectIDNextButtonBackgroundColor{codeScreenScanQRButtonBackgroundColor}
    , documentOptionsTitleFont{descriptionInfoFont}
    , faceScanIntroNextButtonBackgroundColor{codeScreenScanQRButtonBackgroundColor}
    , faceVerificationUICustomization{vendorDefaults()} {}

const std::shared_ptr<platform::readid::UIResources>& ThemeCustomization::passportScanViewCustomization() {
    using Shared = std::shared_ptr<platform::readid::UIResources>;
    return platform::Process::current().part<Shared>([] { return new Shared{vendorResources()}; });
}

DocumentListConfigurationStatus ThemeCustomization::documentListConfigurationStatus() {
    return listStatus();
}

void ThemeCustomization::setDocumentListConfigurationStatus(DocumentListConfigurationStatus status) {
    listStatus() = status;
}

ZorCloseButtonAppearance::ZorCloseButtonAppearance()
    : closeButtonTitle{platform::localizedText("Close")}
    , closeButtonFont{ui::namedOrSystemFont("Karbon-Bold", 17)} {}

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
