#include "ui/DynamicType.hpp"

#include "ui/Fonts.hpp"

namespace kivo::ui {

bool followsReadingSize(const std::shared_ptr<ThemeCustomization>& theme) {
    return !theme || theme->enableDynamicTextSizes;
}

void followReadingSize(platform::TextStyled& text, const std::optional<platform::Font>& themeFont,
                       FallbackFont fallback) {
    text.setAdjustsFontForContentSizeCategory(true);
    text.setFont(platform::FontMetrics::scaledFont(themeFont ? *themeFont
                                                             : namedOrSystemFont(fallback.name, fallback.pointSize)));
}

void limitReadingSize(platform::View& view, const std::shared_ptr<ThemeCustomization>& theme) {
    if (theme) {
        view.setMinimumContentSizeCategory(theme->minimumContentSizeCategoryLimit);
        view.setMaximumContentSizeCategory(theme->maximumContentSizeCategoryLimit);
    }
}

} // namespace kivo::ui
