#pragma once

#include <kivo/platform/ui/TextStyled.hpp>

#include <string>

namespace kivo::platform {

/// A text that cannot be edited, over as many lines as the text needs. Taps pass through the label unless
/// `setUserInteractionEnabled(true)` is called.
class KIVO_EXPORT Label : public TextStyled {
public:
    Label();

    /// The text that the label shows.
    const std::string& text() const { return text_; }

    void setText(std::string text);

    /// Whether the font shrinks when a word is wider than the line. False at first: the word continues in the next
    /// line.
    bool shrinksToWords() const { return shrinksToWords_; }

    void setShrinksToWords(bool shrinks);

    /// The shown font, as small as the words need in the view's present width.
    Font fittedFont() const { return fittedFont(frame().size.width); }

    Size sizeThatFits(double widthLimit) override;

    /// A heading or a status where `accessibility` says so, otherwise a text.
    AccessibilityRole accessibilityRole() const override;

    std::string shownText() const override { return text_; }

private:
    Font fittedFont(double width) const;

    std::string text_;
    bool shrinksToWords_ = false;
};

} // namespace kivo::platform
