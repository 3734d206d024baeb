#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Font.hpp>

#include <string>

namespace kivo {

/// The looks and texts of the vendor's document reading screens, as plain values.
///
/// The wrapper holds no values: every instance reads and writes the shared object of the process,
/// `ThemeCustomization::passportScanViewCustomization()`. Main thread only; set before a document is acquired. Sizes
/// are in points.
class KIVO_EXPORT ReadIDUIResourcesWrapper {
public:
    /// The size of the texts.
    double textSize() const;
    void setTextSize(double size);

    /// The system's font where no font was set; likewise for the other fonts. The document screen sets the button font
    /// to its theme's `primaryButtonFont`.
    platform::Font buttonFont() const;
    void setButtonFont(platform::Font font);

    /// The font of the titles.
    platform::Font titleFont() const;
    void setTitleFont(platform::Font font);

    /// The font of the texts.
    platform::Font textFont() const;
    void setTextFont(platform::Font font);

    /// The size of the texts on buttons.
    double buttonTextSize() const;
    void setButtonTextSize(double size);

    /// The height of the buttons.
    double buttonHeight() const;
    void setButtonHeight(double height);

    /// Whether the vendor's screens follow the reading size that the person has set on the device.
    bool isDynamicTypeEnabled() const;
    void setIsDynamicTypeEnabled(bool enabled);

    /// The string table of the theme's `appBundle` with the vendor's texts; empty where no table was set.
    std::string customStringTableName() const;
    void setCustomStringTableName(std::string name);
};

} // namespace kivo
