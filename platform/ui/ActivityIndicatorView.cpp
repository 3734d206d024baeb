#include <kivo/platform/ui/ActivityIndicatorView.hpp>

#include <algorithm>

namespace kivo::platform {

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

} // namespace kivo::platform
