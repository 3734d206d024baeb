#pragma once

#include <kivo/platform/ui/View.hpp>

#include <string_view>

namespace kivo::platform {

enum class TextAlignment { natural, left, center, right };

/// The base class of views with a text: the text's look, and its size, which may follow the reading size.
class KIVO_EXPORT TextStyled : public View {
public:
    const Font& font() const { return font_; }

    void setFont(Font font);

    /// The font as it is drawn. Its size follows the view's reading size if the view adjusts the font.
    Font shownFont() const;

    const Color& textColor() const { return textColor_; }

    void setTextColor(Color color);

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

private:
    Font font_ = Font::system(17);
    Color textColor_ = Color::black();
    TextAlignment textAlignment_ = TextAlignment::natural;
    bool adjustsFont_ = false;
};

} // namespace kivo::platform
