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

    /// Whether a text is shown smaller where a line has no room for one of its words; false at first, and the word goes
    /// on in the next line.
    bool shrinksToWords() const { return shrinksToWords_; }

    void setShrinksToWords(bool shrinks);

    /// The shown font, as small as the words need at the view's present width.
    Font fittedFont() const { return fittedFont(frame().size.width); }

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::text; }

    std::string shownText() const override { return text_; }

private:
    Font fittedFont(double width) const;

    std::string text_;
    bool shrinksToWords_ = false;
};

} // namespace kivo::platform
