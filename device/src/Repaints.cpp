#include "Repaints.hpp"

#include "Drawing.hpp"
#include "Text.hpp"

#include <utility>

namespace kivo::device {
namespace {

QRect inPixels(const QRectF& area) {
    return area.toAlignedRect().adjusted(-1, -1, 1, 1);
}

} // namespace

QRectF Repaints::collect(const platform::View& view, QPointF origin, Areas& areas) {
    if (view.isHidden() || view.alpha() <= 0) {
        return {};
    }
    origin += toQt(view.frame()).topLeft();
    auto area = drawnArea(view).translated(origin);
    for (const auto& subview : view.subviews()) {
        area = area.united(collect(*subview, origin, areas));
    }
    areas[&view] = area;
    return area;
}

QRegion Repaints::take(platform::Window& window) {
    Areas areas;
    collect(window, {}, areas);
    QRegion region;
    for (const auto& [view, area] : areas) {
        const auto former = areas_.find(view);
        if (former == areas_.end()) {
            region += inPixels(area);
        } else if (former->second != area || changed_.contains(view)) {
            region += inPixels(area);
            region += inPixels(former->second);
        }
    }
    for (const auto& [view, area] : areas_) {
        if (!areas.contains(view)) {
            region += inPixels(area);
        }
    }
    areas_ = std::move(areas);
    changed_.clear();
    return region;
}

} // namespace kivo::device
