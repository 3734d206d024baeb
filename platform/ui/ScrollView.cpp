#include <kivo/platform/ui/ScrollView.hpp>

#include <algorithm>

namespace kivo::platform {

void ScrollView::setContentOffset(double offset) {
    const auto furthest = std::max(contentSize_.height - frame().size.height, 0.0);
    const auto target = std::clamp(offset, 0.0, furthest);
    const auto distance = target - contentOffset_;
    if (distance == 0) {
        return;
    }
    contentOffset_ = target;
    for (const auto& subview : subviews()) {
        auto moved = subview->frame();
        moved.origin.y -= distance;
        subview->setFrame(moved);
    }
    noteChange();
}

void ScrollView::scrollTo(const View& view) {
    layoutIfNeeded();
    const auto wanted = view.frameOnScreen();
    const auto shown = frameOnScreen();
    if (wanted.top() < shown.top()) {
        setContentOffset(contentOffset_ + wanted.top() - shown.top());
    } else if (wanted.bottom() > shown.bottom()) {
        setContentOffset(contentOffset_ + wanted.bottom() - shown.bottom());
    }
}

void ScrollView::layoutSubviews() {
    const auto [width, height] = frame().size;
    contentSize_ = {width, std::max(sizeThatFits(width).height, height)};
    contentOffset_ = std::clamp(contentOffset_, 0.0, contentSize_.height - height);
    for (const auto& subview : subviews()) {
        place(*subview, {.origin = {0, -contentOffset_}, .size = contentSize_});
    }
}

} // namespace kivo::platform
