#pragma once

#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/View.hpp>

namespace kivo::platform {

/// Shows an image, scaled to fit. Taps pass through the view unless `setUserInteractionEnabled(true)` is called.
class KIVO_EXPORT ImageView : public View {
public:
    ImageView();

    /// The picture; null for none.
    const std::shared_ptr<const Image>& image() const { return image_; }

    void setImage(std::shared_ptr<const Image> image);

    Size sizeThatFits(double widthLimit) override;

    AccessibilityRole accessibilityRole() const override { return AccessibilityRole::image; }

private:
    std::shared_ptr<const Image> image_;
};

} // namespace kivo::platform
