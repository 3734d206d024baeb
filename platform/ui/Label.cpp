#include "platform/ui/TextEstimate.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace kivo::platform {

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

void Label::setShrinksToWords(bool shrinks) {
    if (std::exchange(shrinksToWords_, shrinks) != shrinks) {
        setNeedsLayout();
        noteChange();
    }
}

Font Label::fittedFont(double width) const {
    constexpr double unlimited = 1e6;
    auto font = shownFont();
    if (!shrinksToWords_ || width <= 0) {
        return font;
    }
    for (const auto word : unbrokenParts(text_)) {
        const auto needed = [&] { return services().fonts->measure(word, font.name, font.pointSize, unlimited).width; };
        if (const auto full = needed(); full > width) {
            font.pointSize = std::max(std::floor(font.pointSize * width / full), 1.0);
        }
        // Widths do not quite go with the size.
        while (font.pointSize > 1 && needed() > width) {
            font.pointSize -= 1;
        }
    }
    return font;
}

Size Label::sizeThatFits(double widthLimit) {
    if (text_.empty()) {
        return {};
    }
    const auto font = fittedFont(widthLimit);
    return services().fonts->measure(text_, font.name, font.pointSize, widthLimit);
}

} // namespace kivo::platform
