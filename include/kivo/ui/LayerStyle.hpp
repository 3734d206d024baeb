#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/View.hpp>

#include <optional>

/// Corner, border and shadow of any view, as the SDK's own screens set them. Main thread; lengths in points.
namespace kivo::ui {

/// The radius of the view's corners.
KIVO_EXPORT double cornerRadiusExt(const platform::View& view);
/// Also clips the view to its bounds exactly when the radius is above 0.
KIVO_EXPORT void setCornerRadiusExt(platform::View& view, double radius);

/// The width of the view's border.
KIVO_EXPORT double borderWidthExt(const platform::View& view);
KIVO_EXPORT void setBorderWidthExt(platform::View& view, double width);

/// Absent for a view without a border colour.
KIVO_EXPORT std::optional<platform::Color> borderColorExt(const platform::View& view);
KIVO_EXPORT void setBorderColorExt(platform::View& view, std::optional<platform::Color> color);

/// The radius of the view's shadow; 0 without a shadow.
KIVO_EXPORT double shadowRadiusExt(const platform::View& view);
/// Also makes the shadow black, three fifths opaque, and 2 points below the view.
KIVO_EXPORT void setShadowRadiusExt(platform::View& view, double radius);

/// The outline of a screen's main button. The view clips to its bounds for every radius.
KIVO_EXPORT void applyPrimaryButtonStyle(platform::View& view, const platform::Color& borderColor, double cornerRadius,
                                         double borderWidth);

} // namespace kivo::ui
