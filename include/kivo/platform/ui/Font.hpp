#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/ContentSizeCategory.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

/// A typeface at a size in points.
struct Font {
    /// The typeface's name, such as "Karbon-Medium"; empty for the system's own.
    std::string name{};
    double pointSize = 17;
    /// Whether the size follows the person's content size category, in views that adjust to it; see `FontMetrics`.
    bool isScaled = false;

    /// The font of that name; absent when no such font is installed on this machine.
    KIVO_EXPORT static std::optional<Font> named(std::string_view name, double pointSize);

    /// The system's typeface at that size, which does not follow the reading size.
    static Font system(double pointSize) { return {.name = {}, .pointSize = pointSize, .isScaled = false}; }

    bool operator==(const Font&) const = default;
};

/// How fonts grow and shrink with the content size category, after the body text style.
class KIVO_EXPORT FontMetrics {
public:
    /// `base`, marked as following the category. The size of `base` is the size at `ContentSizeCategory::large`.
    static Font scaledFont(Font base);

    /// The size of `font` at `category`; the font's own size unless the font is scaled.
    static double pointSize(const Font& font, ContentSizeCategory category);
};

} // namespace kivo::platform
