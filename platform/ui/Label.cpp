#include "platform/ui/TextEstimate.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/TextStyled.hpp>

#include <algorithm>
#include <cmath>
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
    const auto font = shownFont();
    return services().fonts->measure(text, font.name, font.pointSize, widthLimit);
}

Label::Label() {
    setUserInteractionEnabled(false);
}

void Label::setText(std::string text) {
    if (text != text_) {
        text_ = std::move(text);
        setNeedsLayout();
        noteChange();
    }
}

AccessibilityRole Label::accessibilityRole() const {
    const auto& properties = accessibility();
    return properties.isHeading ? AccessibilityRole::heading
           : properties.isLive  ? AccessibilityRole::status
                                : AccessibilityRole::text;
}

void Label::setShrinksToWords(bool shrinks) {
    if (std::exchange(shrinksToWords_, shrinks) != shrinks) {
        setNeedsLayout();
        noteChange();
    }
}

Font TextStyled::fittingWords(Font font, std::string_view text, double width) {
    constexpr double unlimited = 1e6;
    if (width <= 0) {
        return font;
    }
    for (const auto word : unbrokenParts(text)) {
        const auto needed = [&] { return services().fonts->measure(word, font.name, font.pointSize, unlimited).width; };
        if (const auto full = needed(); full > width) {
            font.pointSize = std::max(std::floor(font.pointSize * width / full), 1.0);
        }
        // The width is not quite proportional to the size.
        while (font.pointSize > 1 && needed() > width) {
            font.pointSize -= 1;
        }
    }
    return font;
}

Font Label::fittedFont(double width) const {
    return shrinksToWords_ ? fittingWords(shownFont(), text_, width) : shownFont();
}

Size Label::sizeThatFits(double widthLimit) {
    if (text_.empty()) {
        return {};
    }
    const auto font = fittedFont(widthLimit);
    return services().fonts->measure(text_, font.name, font.pointSize, widthLimit);
}

} // namespace kivo::platform
