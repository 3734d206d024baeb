#include <kivo/platform/ui/Button.hpp>

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr EdgeInsets contentInsets{.top = 8, .left = 12, .bottom = 8, .right = 12};
constexpr double imageSpacing = 8;

} // namespace

void Button::setTitle(std::string title) {
    title_ = std::move(title);
    setNeedsLayout();
    noteChange();
}

void Button::setImage(std::shared_ptr<const Image> image) {
    image_ = std::move(image);
    setNeedsLayout();
    noteChange();
}

void Button::setBackgroundImage(std::shared_ptr<const Image> image) {
    backgroundImage_ = std::move(image);
    noteChange();
}

Size Button::sizeThatFits(double widthLimit) {
    const auto image = image_ ? image_->size : Size{};
    const auto beside = contentInsets.left + contentInsets.right + image.width +
                        (image.width > 0 && !title_.empty() ? imageSpacing : 0);
    const auto title = measure(title_, std::max(widthLimit - beside, 0.0));
    return {title.width + beside, std::max(title.height, image.height) + contentInsets.top + contentInsets.bottom};
}

bool Button::handleTouch() {
    View::handleTouch();
    sendActions(ControlEvent::touchUpInside);
    return true;
}

} // namespace kivo::platform
