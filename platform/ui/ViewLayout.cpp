#include <kivo/platform/ui/LayoutConstraint.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t rememberedFits = 4;

/// One axis of a placement.
struct Span {
    std::optional<double> near;
    std::optional<double> far;
    std::optional<double> center;
    std::optional<double> length;
    std::optional<double> longest;

    double margins() const { return near.value_or(0) + far.value_or(0); }

    /// The length within `available`; absent when the view's own needs decide.
    std::optional<double> lengthIn(double available) const {
        if (length) {
            return std::max(*length, 0.0);
        }
        return near && far ? std::optional{std::min(std::max(available - margins(), 0.0), longest.value_or(available))}
                           : std::nullopt;
    }

    double positionIn(double start, double available, double ownLength) const {
        if (near && far && longest) {
            return start + *near + std::max(available - margins() - ownLength, 0.0) / 2;
        }
        if (near) {
            return start + *near;
        }
        if (far) {
            return start + available - *far - ownLength;
        }
        return center ? start + (available - ownLength) / 2 + *center : start;
    }

    /// The length that the superview needs for a view of `ownLength`.
    double extent(double ownLength) const { return ownLength + margins() + 2 * std::abs(center.value_or(0)); }
};

Span horizontal(const Placement& placement, LayoutDirection direction) {
    const bool isMirrored = direction == LayoutDirection::rightToLeft;
    const auto either = [](const auto& first, const auto& second) { return first ? first : second; };
    return {either(placement.left, isMirrored ? placement.trailing : placement.leading),
            either(placement.right, isMirrored ? placement.leading : placement.trailing), placement.centerX,
            placement.width, placement.maximumWidth};
}

Span vertical(const Placement& placement) {
    return {placement.top, placement.bottom, placement.centerY, placement.height, std::nullopt};
}

} // namespace

void View::setFrame(const Rect& frame) {
    const auto former = std::exchange(frame_, frame);
    if (former == frame) {
        return;
    }
    if (former.size != frame.size) {
        needsLayout_ = true;
        for (auto* view = this; view && !std::exchange(view->layoutIsPending_, true);) {
            view = view->superview_;
        }
    }
    noteChange();
}

Rect View::frameOnScreen() const {
    auto frame = frame_;
    for (const auto* view = superview_; view; view = view->superview_) {
        frame.origin.x += view->frame_.origin.x;
        frame.origin.y += view->frame_.origin.y;
    }
    return frame;
}

void View::setPlacement(const Placement& placement) {
    if (placement != std::exchange(placement_, placement)) {
        setNeedsLayout();
    }
}

void View::setSafeAreaInsets(const EdgeInsets& insets) {
    if (insets != std::exchange(safeAreaInsets_, insets)) {
        setNeedsLayout();
    }
}

void View::setNeedsLayout() {
    for (auto* view = this; view; view = view->superview_) {
        view->needsLayout_ = true;
        view->layoutIsPending_ = true;
        view->fits_.clear();
    }
}

void View::layoutIfNeeded() {
    auto* top = this;
    while (top->superview_) {
        top = top->superview_;
    }
    // Null while the tree is being destroyed.
    const auto root = top->weak_from_this().lock();
    if (!root) {
        return;
    }
    if (auto* const window = root->asWindow()) {
        window->languageDirection_.reset();
    }
    // A layout may change texts, and so need another layout. A layout that settles at all settles within three.
    for (int pass = 0; pass < 3 && root->layoutIsPending_; ++pass) {
        root->layoutTree();
    }
}

void View::layoutTree() {
    if (std::exchange(needsLayout_, false)) {
        layoutSubviews();
    }
    bool isPending = needsLayout_;
    // A layout may add and remove views, and marks this view with it: the next pass then places the views.
    std::size_t next = 0;
    while (next < subviews_.size()) {
        if (const auto& each = subviews_[next++]; each->layoutIsPending_) {
            const auto subview = each;
            subview->layoutTree();
            isPending = isPending || subview->layoutIsPending_;
        }
    }
    layoutIsPending_ = isPending || needsLayout_;
}

void View::layoutSubviews() {
    for (const auto& subview : subviews_) {
        placeInScreen(*subview);
    }
}

void View::placeInScreen(View& subview) const {
    place(subview, subview.placement_.ignoresSafeArea ? bounds() : inset(bounds(), safeAreaInsets_));
}

void View::place(View& subview, const Rect& area) const {
    const auto [width, height] = area.size;
    const auto across = horizontal(subview.placement_, layoutDirection());
    const auto down = vertical(subview.placement_);
    auto ownWidth = across.lengthIn(width);
    auto ownHeight = down.lengthIn(height);
    if (!ownWidth || !ownHeight) {
        const auto fit = subview.fittingSize(ownWidth.value_or(std::max(width - across.margins(), 0.0)));
        ownWidth = ownWidth.value_or(fit.width);
        ownHeight = ownHeight.value_or(fit.height);
    }
    subview.setFrame(
        {.origin = {across.positionIn(area.left(), width, *ownWidth), down.positionIn(area.top(), height, *ownHeight)},
         .size = {*ownWidth, *ownHeight}});
}

Size View::fittingSize(double widthLimit) {
    const auto limit = placement_.width.value_or(widthLimit);
    const auto known = std::ranges::find(fits_, limit, &Fit::widthLimit);
    if (known != fits_.end()) {
        return known->size;
    }
    auto size = placement_.width && placement_.height ? Size{} : sizeThatFits(limit);
    size.width = placement_.width.value_or(size.width);
    size.height = placement_.height.value_or(
        std::max(std::min(size.height, heightLimit()), placement_.minimumHeight.value_or(0)));
    if (fits_.size() == rememberedFits) {
        fits_.clear();
    }
    fits_.push_back({.widthLimit = limit, .size = size});
    return size;
}

double View::heightLimit() const {
    constexpr double forTexts = 300;
    if (!placement_.shareOfDisplay) {
        return std::numeric_limits<double>::infinity();
    }
    if (pictureHeight_) {
        return *pictureHeight_;
    }
    const auto* root = this;
    while (root->superview_) {
        root = root->superview_;
    }
    return std::max(root->frame_.size.height - forTexts, 0.0) * *placement_.shareOfDisplay;
}

Size View::sizeThatFits(double widthLimit) {
    Size needed;
    for (const auto& subview : subviews_) {
        if (subview->isHidden()) {
            continue;
        }
        const auto across = horizontal(subview->placement_, layoutDirection());
        const auto room = std::max(widthLimit - across.margins(), 0.0);
        const auto fit = subview->fittingSize(std::min(room, subview->placement_.maximumWidth.value_or(room)));
        needed.width = std::max(needed.width, across.extent(fit.width));
        needed.height = std::max(needed.height, vertical(subview->placement_).extent(fit.height));
    }
    return needed;
}

double LayoutConstraint::constant() const {
    const auto view = view_.lock();
    if (!view) {
        return 0;
    }
    const auto& placement = view->placement();
    return (attribute_ == Attribute::width ? placement.width : placement.height).value_or(0);
}

void LayoutConstraint::setConstant(double constant) {
    if (const auto view = view_.lock()) {
        auto placement = view->placement();
        (attribute_ == Attribute::width ? placement.width : placement.height) = constant;
        view->setPlacement(placement);
    }
}

} // namespace kivo::platform
