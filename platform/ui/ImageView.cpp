#include <kivo/platform/ui/ImageView.hpp>

#include <utility>

namespace kivo::platform {

ImageView::ImageView() {
    setUserInteractionEnabled(false);
}

void ImageView::setImage(std::shared_ptr<const Image> image) {
    image_ = std::move(image);
    setNeedsLayout();
    noteChange();
}

Size ImageView::sizeThatFits(double widthLimit) {
    const auto natural = image_ ? image_->size : Size{};
    if (natural.width <= widthLimit) {
        return natural;
    }
    return {widthLimit, natural.height * widthLimit / natural.width};
}

} // namespace kivo::platform
