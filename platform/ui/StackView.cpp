#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

namespace kivo::platform {
namespace {

using Views = std::vector<std::shared_ptr<View>>;

double gaps(const Views& views, double spacing) {
    return views.empty() ? 0 : spacing * static_cast<double>(views.size() - 1);
}

bool grows(const std::shared_ptr<View>& view) {
    return view->placement().grows;
}

double sum(const std::vector<double>& lengths) {
    return std::accumulate(lengths.begin(), lengths.end(), 0.0);
}

} // namespace

void StackView::setAxis(Axis axis) {
    axis_ = axis;
    setNeedsLayout();
}

void StackView::setSpacing(double spacing) {
    spacing_ = spacing;
    setNeedsLayout();
}

void StackView::setAlignment(Alignment alignment) {
    alignment_ = alignment;
    setNeedsLayout();
}

void StackView::setDistribution(Distribution distribution) {
    distribution_ = distribution;
    setNeedsLayout();
}

void StackView::setMargins(const EdgeInsets& margins) {
    margins_ = margins;
    setNeedsLayout();
}

StackView::Views StackView::inLine() const {
    Views shown;
    shown.reserve(subviews().size());
    std::ranges::copy_if(subviews(), std::back_inserter(shown),
                         [](const auto& view) { return !view->isHidden() && !view->placeBeside_; });
    return shown;
}

std::vector<double> StackView::widthsInRow(const Views& views, double available) const {
    auto rest = std::max(available - gaps(views, spacing_), 0.0);
    std::vector<double> widths;
    if (distribution_ == Distribution::fillEqually) {
        widths.assign(views.size(), views.empty() ? 0 : rest / static_cast<double>(views.size()));
        return widths;
    }
    widths.reserve(views.size());
    // Views of a fixed width come first; the others share the rest.
    for (const auto& view : views) {
        rest -= view->placement().width.value_or(0);
    }
    for (const auto& view : views) {
        const auto fixed = view->placement().width;
        widths.push_back(fixed ? *fixed : std::min(view->fittingSize(std::max(rest, 0.0)).width, std::max(rest, 0.0)));
        rest -= fixed ? 0 : widths.back();
    }
    return widths;
}

std::vector<double> StackView::heightsInColumn(const Views& views, double width) {
    std::vector<double> heights;
    heights.reserve(views.size());
    for (const auto& view : views) {
        heights.push_back(view->fittingSize(width).height);
    }
    return heights;
}

Size StackView::sizeThatFits(double widthLimit) {
    const auto views = inLine();
    const auto available = std::max(widthLimit - margins_.left - margins_.right, 0.0);
    Size needed;
    if (axis_ == Axis::horizontal) {
        const auto widths = widthsInRow(views, available);
        auto grown = widths;
        if (std::ranges::any_of(views, grows)) {
            // A text that gets more room may be set in a larger font, and so be higher.
            shareRest(views, grown, available);
        }
        double widest = 0;
        for (std::size_t i = 0; i < views.size(); ++i) {
            const auto fit = views[i]->fittingSize(grown[i]);
            widest = std::max(widest, fit.width);
            needed.height = std::max(needed.height, fit.height);
        }
        const auto isEqual = distribution_ == Distribution::fillEqually;
        needed.width = gaps(views, spacing_) + (isEqual ? widest * static_cast<double>(views.size()) : sum(widths));
    } else {
        auto heights = heightsInColumn(views, available);
        for (const auto& view : views) {
            needed.width = std::max(needed.width, view->fittingSize(available).width);
        }
        if (distribution_ == Distribution::fillEqually && !heights.empty()) {
            heights.assign(heights.size(), *std::ranges::max_element(heights));
        }
        needed.height = gaps(views, spacing_) + sum(heights);
    }
    return {needed.width + margins_.left + margins_.right, needed.height + margins_.top + margins_.bottom};
}

void StackView::layoutSubviews() {
    const auto views = inLine();
    const auto area = inset(inset(bounds(), safeAreaInsets()), margins_);
    const bool isRow = axis_ == Axis::horizontal;
    auto lengths = isRow ? widthsInRow(views, area.size.width) : heightsInColumn(views, area.size.width);
    shareRest(views, lengths, isRow ? area.size.width : area.size.height);
    const bool isMirrored = layoutDirection() == LayoutDirection::rightToLeft;
    auto position = isRow ? 0 : area.top();
    for (std::size_t i = 0; i < views.size(); ++i) {
        const auto length = lengths[i];
        const auto fit = views[i]->fittingSize(isRow ? length : area.size.width);
        const auto across =
            lengthAcross(*views[i], isRow ? fit.height : fit.width, isRow ? area.size.height : area.size.width);
        const auto offset = offsetAcross(across, isRow ? area.size.height : area.size.width);
        const auto x = isMirrored ? area.right() - position - length : area.left() + position;
        const Rect row{.origin = {x, area.top() + offset}, .size = {length, across}};
        const Rect column{.origin = {area.left() + offset, position}, .size = {across, length}};
        views[i]->setFrame(isRow ? row : column);
        position += length + spacing_;
    }
    placeBeside();
}

void StackView::placeBeside() {
    for (const auto& view : subviews()) {
        if (!view->placeBeside_ || view->isHidden()) {
            continue;
        }
        auto place = *view->placeBeside_;
        const View* column = this;
        while (dynamic_cast<const ScrollView*>(column->superview_) == nullptr) {
            place.origin.x -= column->frame().origin.x;
            place.origin.y -= column->frame().origin.y;
            column = column->superview_;
        }
        view->setFrame(place);
    }
}

void StackView::shareRest(const Views& views, std::vector<double>& lengths, double available) const {
    if (views.empty()) {
        return;
    }
    const auto space = std::max(available - gaps(views, spacing_), 0.0);
    if (distribution_ == Distribution::fillEqually) {
        lengths.assign(views.size(), space / static_cast<double>(views.size()));
        return;
    }
    const auto isFixed = [this](const auto& view) {
        return (axis_ == Axis::horizontal ? view->placement().width : view->placement().height).has_value();
    };
    const auto rest = std::max(space - sum(lengths), 0.0);
    const auto growing = std::ranges::count_if(views, grows);
    if (growing > 0) {
        for (std::size_t i = 0; i < views.size(); ++i) {
            lengths[i] += grows(views[i]) ? rest / static_cast<double>(growing) : 0;
        }
        return;
    }
    for (std::size_t i = views.size(); i-- > 0;) {
        if (!isFixed(views[i])) {
            lengths[i] += rest;
            return;
        }
    }
}

double StackView::lengthAcross(const View& view, double needed, double available) const {
    const auto& placement = view.placement();
    const auto fixed = axis_ == Axis::horizontal ? placement.height : placement.width;
    if (fixed) {
        return *fixed;
    }
    return alignment_ == Alignment::fill ? available : std::min(needed, available);
}

double StackView::offsetAcross(double length, double available) const {
    const bool isMirrored = axis_ == Axis::vertical && layoutDirection() == LayoutDirection::rightToLeft;
    switch (alignment_) {
    case Alignment::center:
        return (available - length) / 2;
    case Alignment::trailing:
        return isMirrored ? 0 : available - length;
    case Alignment::leading:
        return isMirrored ? available - length : 0;
    case Alignment::fill:
        break;
    }
    return 0;
}

} // namespace kivo::platform
