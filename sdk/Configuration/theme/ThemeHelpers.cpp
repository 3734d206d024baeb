#include "Configuration/theme/ThemeHelpers.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Image.hpp>

#include <utility>

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
