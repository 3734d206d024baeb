#include "Configuration/theme/ReadingSize.hpp"

#include <kivo/platform/ui/Window.hpp>

namespace kivo::ui {

bool followsReadingSize(platform::View& view, const std::shared_ptr<ThemeCustomization>& theme) {
    if (!theme) {
        return true;
    }
    const bool follows = theme->enableDynamicTextSizes;
    constexpr auto usual = platform::ContentSizeCategory::large;
    view.setMinimumContentSizeCategory(follows ? theme->minimumContentSizeCategoryLimit : usual);
    view.setMaximumContentSizeCategory(follows ? theme->maximumContentSizeCategoryLimit : usual);
    return follows;
}

void followReadingSize(platform::TextStyled& text, const std::optional<platform::Font>& themeFont,
                       FallbackFont fallback) {
    text.setAdjustsFontForContentSizeCategory(true);
    text.setFont(platform::FontMetrics::scaledFont(themeFont ? *themeFont
                                                             : namedOrSystemFont(fallback.name, fallback.pointSize)));
}

void followReadingSize(platform::TextStyled& text, const std::shared_ptr<ThemeCustomization>& theme,
                       std::optional<platform::Font> ThemeCustomization::* font, FallbackFont fallback) {
    followReadingSize(text, theme ? (*theme).*font : std::nullopt, fallback);
}

void overrideChildrenContentSizeCategories(platform::ViewController& screen) {
    const auto window = screen.windowOfScreen();
    if (!window) {
        return;
    }
    for (const auto& child : screen.children()) {
        child->overrideContentSizeCategory(window->preferredContentSizeCategory());
    }
}

} // namespace kivo::ui
