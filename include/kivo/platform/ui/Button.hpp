#pragma once

#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/Image.hpp>

namespace kivo::platform {

/// A button with a title, an image or both, for its normal state. Its font and text colour are the title's.
class KIVO_EXPORT Button : public Control {
public:
    const std::string& title() const { return title_; }

    void setTitle(std::string title);

    const std::shared_ptr<const Image>& image() const { return image_; }

    void setImage(std::shared_ptr<const Image> image);

    const std::shared_ptr<const Image>& backgroundImage() const { return backgroundImage_; }

    void setBackgroundImage(std::shared_ptr<const Image> image);

    /// A person's tap: `touch`.
    bool tap() { return touch(); }

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::button; }

    std::string shownText() const override { return title_; }

protected:
    bool handleTouch() override;

private:
    std::string title_;
    std::shared_ptr<const Image> image_;
    std::shared_ptr<const Image> backgroundImage_;
};

} // namespace kivo::platform
