#pragma once

#include <kivo/platform/ui/View.hpp>

#include <string_view>

namespace kivo::platform {

/// Where a line of text stands; `natural` follows the language.
enum class TextAlignment { natural, left, center, right };

/// The base class of views with a text: the text's look, and its size, which may follow the reading size.
class KIVO_EXPORT TextStyled : public View {
public:
    /// The font for the usual reading size; the system's at 17 points at first.
    const Font& font() const { return font_; }

    void setFont(Font font);

    /// The font as it is drawn. Its size follows the view's reading size if the view adjusts the font.
    virtual Font shownFont() const;

    /// The colour of the text; black at first.
    const Color& textColor() const { return textColor_; }

    void setTextColor(Color color);

    /// Where the lines stand; `natural` at first.
    TextAlignment textAlignment() const { return textAlignment_; }

    void setTextAlignment(TextAlignment alignment);

    /// Whether scaled fonts follow the reading size; false at first.
    bool adjustsFontForContentSizeCategory() const { return adjustsFont_; }

    void setAdjustsFontForContentSizeCategory(bool adjusts);

protected:
    TextStyled() = default;

    void contentSizeCategoryDidChange() override;

    /// The size of `text` in the shown font.
    Size measure(std::string_view text, double widthLimit) const;

    /// `font`, as much smaller as the longest word of `text` needs in lines of that width.
    static Font fittingWords(Font font, std::string_view text, double width);

private:
    Font font_ = Font::system(17);
    Color textColor_ = Color::black();
    TextAlignment textAlignment_ = TextAlignment::natural;
    bool adjustsFont_ = false;
};

} // namespace kivo::platform
