#pragma once

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>
#include <string_view>

/// How the texts of every screen follow the person's reading size.
namespace kivo::ui {

/// The font of that name or, where no such font is installed, the system's font of the same size.
inline platform::Font namedOrSystemFont(std::string_view name, double pointSize) {
    return platform::Font::named(name, pointSize).value_or(platform::Font::system(pointSize));
}

/// The font of a text for which the theme has none.
struct FallbackFont {
    std::string_view name;
    double pointSize;
};

inline constexpr FallbackFont screenTitleFallback{.name = "Karbon-Medium", .pointSize = 32};
inline constexpr FallbackFont finalTitleFallback{.name = "Karbon-Medium", .pointSize = 22};
inline constexpr FallbackFont textFallback{.name = "Karbon-Regular", .pointSize = 17};

/// Limits the reading size in a screen's view: to the theme's limits, or to the usual size where the theme does not
/// follow the reading size, so that texts of the layout keep their size as well. Without a theme there are no limits.
/// Returns whether the screen follows the reading size.
bool followsReadingSize(platform::View& view, const std::shared_ptr<ThemeCustomization>& theme);

/// Gives the text its font, which grows and shrinks with the reading size like the body text style.
void followReadingSize(platform::TextStyled& text, const std::optional<platform::Font>& themeFont = {},
                       FallbackFont fallback = textFallback);

/// Takes the font from a theme, which may be null.
void followReadingSize(platform::TextStyled& text, const std::shared_ptr<ThemeCustomization>& theme,
                       std::optional<platform::Font> ThemeCustomization::* font, FallbackFont fallback = textFallback);

/// Gives every child of the screen the reading size that the person has set on the device. Works from `viewWillAppear`
/// on; while the screen belongs to no window, nothing happens.
void overrideChildrenContentSizeCategories(platform::ViewController& screen);

} // namespace kivo::ui
