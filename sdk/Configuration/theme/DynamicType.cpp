#include "Configuration/theme/DynamicType.hpp"

#include "ui/Fonts.hpp"

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

} // namespace kivo::ui
