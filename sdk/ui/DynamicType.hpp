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

/// Whether a screen with this theme follows the reading size; one without a theme does.
bool followsReadingSize(const std::shared_ptr<ThemeCustomization>& theme);

/// Gives the text its font, growing and shrinking with the reading size after the body text style.
void followReadingSize(platform::TextStyled& text, const std::optional<platform::Font>& themeFont,
                       FallbackFont fallback = textFallback);

/// Keeps the reading size of a screen's view within the theme's limits; no theme, no limits.
void limitReadingSize(platform::View& view, const std::shared_ptr<ThemeCustomization>& theme);

} // namespace kivo::ui
