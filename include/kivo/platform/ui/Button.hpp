#pragma once

#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/Image.hpp>

namespace kivo::platform {

/// A button with a title, an image or both, for its normal state. Its font and text colour are the title's.
class KIVO_EXPORT Button : public Control {
public:
    /// The button's text.
    const std::string& title() const { return title_; }

    void setTitle(std::string title);

    /// The picture beside the text; null for none.
    const std::shared_ptr<const Image>& image() const { return image_; }

    void setImage(std::shared_ptr<const Image> image);

    /// The picture behind the text; null for none.
    const std::shared_ptr<const Image>& backgroundImage() const { return backgroundImage_; }

    void setBackgroundImage(std::shared_ptr<const Image> image);

    /// A person's tap: `touch`.
    bool tap() { return touch(); }

    Size sizeThatFits(double widthLimit) override;

    /// The font as it is drawn: smaller where a line of the title has no room for one of its words.
    Font shownFont() const override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::button; }

    std::string shownText() const override { return title_; }

protected:
    bool handleTouch() override;

private:
    /// The part of a width that image, spacing and margins take.
    double widthBesideTitle() const;

    std::string title_;
    std::shared_ptr<const Image> image_;
    std::shared_ptr<const Image> backgroundImage_;
};

} // namespace kivo::platform
