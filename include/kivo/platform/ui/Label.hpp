#pragma once

#include <kivo/platform/ui/TextStyled.hpp>

#include <string>

namespace kivo::platform {

/// A text that cannot be edited, over as many lines as it needs. Taps go through it unless it is made to take input.
class KIVO_EXPORT Label : public TextStyled {
public:
    Label();

    const std::string& text() const { return text_; }

    void setText(std::string text);

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::text; }

    std::string shownText() const override { return text_; }

private:
    std::string text_;
};

} // namespace kivo::platform
