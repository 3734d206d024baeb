#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace kivo::platform {
namespace {

/// A lower picture tells nothing.
constexpr double leastPicture = 64;
/// Between a picture and the column beside the picture; half of it remains at the edges.
constexpr double gapBeside = 40;

} // namespace

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
    Views pictures;
    addPictures(*this, pictures);
    std::vector<std::pair<std::optional<double>, std::optional<Rect>>> former;
    former.reserve(pictures.size());
    for (const auto& picture : pictures) {
        former.emplace_back(picture->pictureHeight_, picture->placeBeside_);
    }
    makeRoom(pictures);
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (former[i] != std::pair{pictures[i]->pictureHeight_, pictures[i]->placeBeside_}) {
            pictures[i]->noteChange();
        }
    }
    contentSize_ = {width, std::max(sizeThatFits(width).height, height)};
    contentOffset_ = std::clamp(contentOffset_, 0.0, contentSize_.height - height);
    for (const auto& subview : subviews()) {
        const auto aside = subview.get() == columnAside_ ? aside_ : 0;
        place(*subview, {.origin = {aside, -contentOffset_}, .size = contentSize_});
    }
}

void ScrollView::makeRoom(const Views& pictures) {
    const auto [width, height] = frame().size;
    columnAside_ = nullptr;
    for (const auto& picture : pictures) {
        setRoom(*picture, std::nullopt);
    }
    const auto wanted = [width](View& picture) {
        return std::min(picture.sizeThatFits(width).height, picture.heightLimit());
    };
    const auto leaveEach = [&](double room) {
        for (const auto& picture : pictures) {
            setRoom(*picture, std::nullopt);
            setRoom(*picture, std::min(wanted(*picture), room));
        }
        return sizeThatFits(width).height;
    };
    const bool fits = pictures.empty() || sizeThatFits(width).height <= height;
    if (!fits) {
        if (const auto rest = height - leaveEach(leastPicture); rest >= 0) {
            leaveEach(leastPicture + std::floor(rest / static_cast<double>(pictures.size())));
            return;
        }
    }
    for (const auto& picture : pictures) {
        if ((fits && wanted(*picture) >= leastPicture) || standBeside(*picture)) {
            continue;
        }
        if (!fits) {
            setRoom(*picture, 0);
        }
    }
}

void ScrollView::addPictures(const View& around, Views& found) const {
    for (const auto& view : around.subviews_) {
        if (view->isHidden_) {
            continue;
        }
        if (view->placement_.shareOfDisplay) {
            found.push_back(view);
        } else if (!view->subviews_.empty() && dynamic_cast<const ScrollView*>(view.get()) == nullptr) {
            addPictures(*view, found);
        }
    }
}

void ScrollView::setRoom(View& picture, std::optional<double> height, const std::optional<Rect>& beside) {
    if (picture.pictureHeight_ == height && picture.placeBeside_ == beside) {
        return;
    }
    picture.pictureHeight_ = height;
    picture.placeBeside_ = beside;
    // The views from the picture up to this view need a layout. This view is in the middle of its own layout.
    for (auto* view = &picture; view != this; view = view->superview_) {
        view->needsLayout_ = true;
        view->layoutIsPending_ = true;
        view->fits_.clear();
    }
    fits_.clear();
}

bool ScrollView::standBeside(View& picture) {
    const auto [width, height] = frame().size;
    const auto* const stack = dynamic_cast<const StackView*>(picture.superview_);
    const View* column = stack;
    while (column != nullptr && column->superview_ != this) {
        column = column->superview_;
    }
    if (columnAside_ != nullptr || column == nullptr || stack->axis() != StackView::Axis::vertical) {
        return false;
    }
    const auto columnWidth = column->placement_.maximumWidth.value_or(width);
    const auto room = width - columnWidth - 2 * gapBeside;
    if (room <= 0) {
        return false;
    }
    const auto natural = picture.sizeThatFits(room);
    const auto shrunk = std::min(1.0, (height - gapBeside) / natural.height);
    const Size size{natural.width * shrunk, natural.height * shrunk};
    if (size.height < leastPicture) {
        return false;
    }
    const bool isMirrored = layoutDirection() == LayoutDirection::rightToLeft;
    const auto left = isMirrored ? columnWidth + gapBeside : -gapBeside - size.width;
    const auto top = (height - size.height) / 2 - column->placement_.top.value_or(0);
    setRoom(picture, 0, Rect{.origin = {left, top}, .size = size});
    columnAside_ = column;
    aside_ = (isMirrored ? -1 : 1) * (size.width + gapBeside) / 2;
    return true;
}

} // namespace kivo::platform
