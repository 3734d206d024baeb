#include "Drawing.hpp"

#include "Text.hpp"

#include <kivo/platform/ui/ScrollView.hpp>

#include <QImage>
#include <QPainterPath>
#include <algorithm>
#include <utility>

namespace kivo::device {
namespace {

using platform::UserInterfaceStyle;

constexpr int shadowSteps = 8;

QPainterPath box(const QRectF& rect, double cornerRadius) {
    QPainterPath path;
    const auto radius = std::clamp(cornerRadius, 0.0, std::min(rect.width(), rect.height()) / 2);
    path.addRoundedRect(rect, radius, radius);
    return path;
}

bool hasShadow(const platform::Layer& layer) {
    return layer.shadowOpacity > 0 && layer.shadowColor && !layer.masksToBounds;
}

/// Draws a shadow as boxes over one another, each larger and fainter.
void drawShadow(QPainter& painter, const QRectF& bounds, const platform::Layer& layer, UserInterfaceStyle style) {
    auto color = toQt(*layer.shadowColor, style);
    color.setAlphaF(static_cast<float>(color.alphaF() * layer.shadowOpacity / shadowSteps));
    const auto place = bounds.translated(layer.shadowOffset.width, layer.shadowOffset.height);
    for (int i = 0; i < shadowSteps; ++i) {
        const auto reach = layer.shadowRadius * (1 - 2.0 * i / (shadowSteps - 1));
        painter.fillPath(box(place.adjusted(-reach, -reach, reach, reach), layer.cornerRadius + reach), color);
    }
}

/// The area on which a view itself may draw, its shadow included; in its own coordinates.
QRectF drawnArea(const platform::View& view) {
    const auto bounds = toQt(view.bounds());
    const auto& layer = view.layer();
    if (!hasShadow(layer)) {
        return bounds;
    }
    const auto reach = layer.shadowRadius;
    return bounds.united(
        bounds.translated(layer.shadowOffset.width, layer.shadowOffset.height).adjusted(-reach, -reach, reach, reach));
}

void drawBorder(QPainter& painter, const QRectF& bounds, const platform::Layer& layer, UserInterfaceStyle style) {
    if (layer.borderWidth <= 0) {
        return;
    }
    const auto half = layer.borderWidth / 2;
    painter.strokePath(box(bounds.adjusted(half, half, -half, -half), layer.cornerRadius - half),
                       QPen{toQt(layer.borderColor.value_or(platform::Color::black()), style), layer.borderWidth});
}

/// The view and its subviews, in its own coordinates and without its alpha.
void drawOpaque(QPainter& painter, platform::View& view, const DrawState& state) {
    const auto bounds = toQt(view.bounds());
    const auto& layer = view.layer();
    const auto style = view.userInterfaceStyle();
    if (hasShadow(layer)) {
        drawShadow(painter, bounds, layer, style);
    }
    if (const auto& color = view.backgroundColor()) {
        painter.fillPath(box(bounds, layer.cornerRadius), toQt(*color, style));
    }
    painter.save();
    if (clips(view)) {
        if (layer.cornerRadius > 0) {
            painter.setClipPath(box(bounds, layer.cornerRadius), Qt::IntersectClip);
        } else {
            painter.setClipRect(bounds, Qt::IntersectClip);
        }
    }
    painter.save();
    drawContent(painter, view, state);
    painter.restore();
    for (const auto& subview : view.subviews()) {
        drawTree(painter, *subview, state);
    }
    painter.restore();
    drawBorder(painter, bounds, layer, style);
}

/// Draws a translucent view as a whole, so that its overlapping subviews do not shine through each other.
void drawTranslucent(QPainter& painter, platform::View& view, const DrawState& state) {
    const auto area = (painter.hasClipping() ? painter.clipBoundingRect() : drawnArea(view)).toAlignedRect();
    const auto density = painter.device()->devicePixelRatioF() * painter.worldTransform().m11();
    QImage sheet{(QSizeF{area.size()} * density).toSize(), QImage::Format_ARGB32_Premultiplied};
    sheet.setDevicePixelRatio(density);
    sheet.fill(Qt::transparent);
    QPainter onSheet{&sheet};
    onSheet.setRenderHints(painter.renderHints());
    onSheet.translate(-area.topLeft());
    onSheet.setClipRect(area);
    drawOpaque(onSheet, view, state);
    onSheet.end();
    painter.setOpacity(painter.opacity() * view.alpha());
    painter.drawImage(area.topLeft(), sheet);
}

QRect inPixels(const QRectF& area) {
    return area.toAlignedRect().adjusted(-1, -1, 1, 1);
}

} // namespace

bool clips(const platform::View& view) {
    return view.layer().masksToBounds || dynamic_cast<const platform::ScrollView*>(&view) != nullptr;
}

bool isInScrollView(const platform::View& view) {
    for (auto around = view.superview(); around; around = around->superview()) {
        if (std::dynamic_pointer_cast<platform::ScrollView>(around)) {
            return true;
        }
    }
    return false;
}

QRectF visiblePart(const platform::View& view) {
    auto part = toQt(view.frameOnScreen());
    for (auto around = view.superview(); around; around = around->superview()) {
        if (clips(*around) || !around->superview()) {
            part = part.intersected(toQt(around->frameOnScreen()));
        }
    }
    return part;
}

void drawTree(QPainter& painter, platform::View& view, const DrawState& state) {
    if (view.isHidden() || view.alpha() <= 0) {
        return;
    }
    const auto frame = toQt(view.frame());
    if (clips(view) && painter.hasClipping() &&
        !painter.clipBoundingRect().intersects(drawnArea(view).translated(frame.topLeft()))) {
        return;
    }
    painter.save();
    painter.translate(frame.topLeft());
    if (view.alpha() < 1) {
        drawTranslucent(painter, view, state);
    } else {
        drawOpaque(painter, view, state);
    }
    painter.restore();
}

QColor groundOf(const platform::Window& window) {
    return window.userInterfaceStyle() == UserInterfaceStyle::dark ? Qt::black : Qt::white;
}

QImage pictureOf(platform::Window& window, double scale, const DrawState& state) {
    const QSizeF size{window.frame().size.width, window.frame().size.height};
    QImage picture{(size * scale).toSize(), QImage::Format_RGB32};
    picture.setDevicePixelRatio(scale);
    picture.fill(groundOf(window));
    QPainter painter{&picture};
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.setClipRect(QRectF{{}, size});
    drawTree(painter, window, state);
    return picture;
}

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
