#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/TextStyled.hpp>

#include <utility>

namespace kivo::platform {

void TextStyled::setFont(Font font) {
    if (font != font_) {
        font_ = std::move(font);
        setNeedsLayout();
        noteChange();
    }
}

Font TextStyled::shownFont() const {
    auto font = font_;
    if (adjustsFont_) {
        font.pointSize = FontMetrics::pointSize(font, contentSizeCategory());
    }
    return font;
}

void TextStyled::setTextColor(Color color) {
    textColor_ = color;
    noteChange();
}

void TextStyled::setTextAlignment(TextAlignment alignment) {
    textAlignment_ = alignment;
    noteChange();
}

void TextStyled::setAdjustsFontForContentSizeCategory(bool adjusts) {
    if (std::exchange(adjustsFont_, adjusts) != adjusts) {
        setNeedsLayout();
        noteChange();
    }
}

void TextStyled::contentSizeCategoryDidChange() {
    if (adjustsFont_ && font_.isScaled) {
        setNeedsLayout();
        noteChange();
    }
}

Size TextStyled::measure(std::string_view text, double widthLimit) const {
    const auto pointSize = adjustsFont_ ? FontMetrics::pointSize(font_, contentSizeCategory()) : font_.pointSize;
    return services().fonts->measure(text, font_.name, pointSize, widthLimit);
}

} // namespace kivo::platform
