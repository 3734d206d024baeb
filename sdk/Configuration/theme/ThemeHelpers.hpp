#pragma once

#include <kivo/ThemeCustomization.hpp>

namespace kivo {

/// Carries a theme over to the screens that the face-scan vendor draws.
struct ThemeHelpers {
    /// Hands the theme's customization, the same object, to the vendor for bright and for low light. The host's image
    /// "FaceTec_ideal_5", where there is one, is what the vendor's retry screen shows. Main thread, before the vendor's
    /// screens come up; without a vendor, or with a theme that has no customization, nothing changes.
    static void applyTheme(const ThemeCustomization& themeObj);
};

} // namespace kivo
