#pragma once

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <memory>
#include <optional>
#include <string_view>

/// How the texts of every screen follow the person's reading size.
namespace kivo::ui {

/// The font for a text where the theme has none; the system's of that size where this one is not installed.
struct FallbackFont {
    std::string_view name;
    double pointSize;
};

inline constexpr FallbackFont screenTitleFallback{.name = "Karbon-Medium", .pointSize = 32};
inline constexpr FallbackFont finalTitleFallback{.name = "Karbon-Medium", .pointSize = 22};
inline constexpr FallbackFont textFallback{.name = "Karbon-Regular", .pointSize = 17};

/// Limits the reading size in a screen's view as the theme says: to the theme's limits, or to the usual size where the
/// theme follows none, so that texts of the layout stay as well. Without a theme there are no limits. Returns whether
/// the screen follows the reading size.
bool followsReadingSize(platform::View& view, const std::shared_ptr<ThemeCustomization>& theme);

/// Gives the text its font, growing and shrinking with the reading size after the body text style.
void followReadingSize(platform::TextStyled& text, const std::optional<platform::Font>& themeFont,
                       FallbackFont fallback = textFallback);

} // namespace kivo::ui
