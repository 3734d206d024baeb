#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/ImageView.hpp>

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr EdgeInsets contentInsets{.top = 8, .left = 12, .bottom = 8, .right = 12};
constexpr double imageSpacing = 8;

} // namespace

void Control::setEnabled(bool enabled) {
    isEnabled_ = enabled;
    noteChange();
}

void Control::addAction(ControlEvent event, Action action) {
    actions_.emplace_back(event, std::move(action));
}

void Control::sendActions(ControlEvent event) {
    const auto self = shared_from_this();
    // An action may add another one, which waits for the next event and may move the list.
    const auto count = actions_.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (actions_[i].first == event) {
            const auto action = actions_[i].second;
            action(self);
        }
    }
}

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

double Button::widthBesideTitle() const {
    const auto image = image_ ? image_->size.width : 0;
    return contentInsets.left + contentInsets.right + image + (image > 0 && !title_.empty() ? imageSpacing : 0);
}

Font Button::shownFont() const {
    // A button of a fixed width gives up some of its margins first.
    constexpr double spare = contentInsets.left + contentInsets.right - 8;
    return fittingWords(TextStyled::shownFont(), title_, frame().size.width - widthBesideTitle() + spare);
}

Size Button::sizeThatFits(double widthLimit) {
    const auto image = image_ ? image_->size : Size{};
    const auto beside = widthBesideTitle();
    const auto room = std::max(widthLimit - beside, 0.0);
    const auto font = fittingWords(TextStyled::shownFont(), title_, room);
    const auto title = services().fonts->measure(title_, font.name, font.pointSize, room);
    return {title.width + beside, std::max(title.height, image.height) + contentInsets.top + contentInsets.bottom};
}

bool Button::handleTouch() {
    View::handleTouch();
    sendActions(ControlEvent::touchUpInside);
    return true;
}

void ActivityIndicatorView::setColor(Color color) {
    color_ = color;
    noteChange();
}

void ActivityIndicatorView::startAnimating() {
    isAnimating_ = true;
    noteChange();
}

void ActivityIndicatorView::stopAnimating() {
    isAnimating_ = false;
    noteChange();
}

Size ActivityIndicatorView::sizeThatFits(double widthLimit) {
    const auto side = std::min(style_ == Style::large ? 37.0 : 20.0, widthLimit);
    return {side, side};
}

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
