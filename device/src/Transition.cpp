#include "Transition.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/NavigationController.hpp>

#include <QEasingCurve>
#include <QLinearGradient>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

namespace kivo::device {
namespace {

/// The distance that the screen below moves while another screen is pushed over it, as a part of the width.
constexpr double parallax = 0.3;

constexpr std::chrono::milliseconds transitionTime{280};
constexpr double dimming = 0.14;   // of the screen below another screen
constexpr double shadowWidth = 14; // points beside a screen that is pushed

/// Draws `upper` at `place` over `lower` at `lowerPlace`, which is darker the further the upper screen has come.
void drawStack(QPainter& painter, const QPixmap& lower, QPointF lowerPlace, const QPixmap& upper, QPointF place,
               QSizeF size) {
    painter.drawPixmap(lowerPlace, lower);
    const auto way = 1 - std::max(std::abs(place.x()) / size.width(), place.y() / size.height());
    painter.fillRect(QRectF{{}, size}, QColor::fromRgbF(0, 0, 0, static_cast<float>(dimming * way)));
    if (place.x() != 0) {
        const auto edge = place.x() > 0 ? place.x() : place.x() + size.width();
        const auto end = place.x() > 0 ? edge - shadowWidth : edge + shadowWidth;
        QLinearGradient shadow{end, 0, edge, 0};
        shadow.setColorAt(0, QColor{0, 0, 0, 0});
        shadow.setColorAt(1, QColor{0, 0, 0, 45});
        painter.fillRect(QRectF{QPointF{std::min(edge, end), 0}, QSizeF{shadowWidth, size.height()}}, shadow);
    }
    painter.drawPixmap(place, upper);
}

} // namespace

Depth depthOf(const platform::Window& window) {
    Depth depth;
    for (auto screen = window.rootViewController(); screen; screen = screen->presentedViewController()) {
        ++depth.presented;
    }
    const auto visible = window.visibleViewController();
    depth.isAlert = std::dynamic_pointer_cast<platform::AlertController>(visible) != nullptr;
    if (const auto navigation = visible ? visible->navigationController() : nullptr) {
        depth.pushed = navigation->viewControllers().size();
    }
    return depth;
}

Transition::Kind Transition::kindOf(const Depth& before, const Depth& after) {
    if (before.isAlert != after.isAlert) {
        return Kind::fade;
    }
    if (before.presented != after.presented) {
        return before.presented < after.presented ? Kind::present : Kind::dismiss;
    }
    if (before.pushed != after.pushed) {
        return before.pushed < after.pushed ? Kind::push : Kind::pop;
    }
    return Kind::none;
}

bool Transition::isOver(MotionTime now) const {
    return now - start_ >= transitionTime;
}

void Transition::draw(QPainter& painter, const QPixmap& after, QSizeF size, MotionTime now) const {
    const auto part = static_cast<double>((now - start_).count()) / static_cast<double>(transitionTime.count());
    const auto way = QEasingCurve{QEasingCurve::OutCubic}.valueForProgress(std::clamp(part, 0.0, 1.0));
    const auto rest = 1 - way;
    const auto width = isMirrored_ ? -size.width() : size.width();
    const auto height = size.height();
    switch (kind_) {
    case Kind::push:
        drawStack(painter, before_, {-parallax * width * way, 0}, after, {width * rest, 0}, size);
        break;
    case Kind::pop:
        drawStack(painter, after, {-parallax * width * rest, 0}, before_, {width * way, 0}, size);
        break;
    case Kind::present:
        drawStack(painter, before_, {}, after, {0, height * rest}, size);
        break;
    case Kind::dismiss:
        drawStack(painter, after, {}, before_, {0, height * way}, size);
        break;
    case Kind::fade:
    case Kind::none:
        painter.drawPixmap(QPointF{}, before_);
        painter.setOpacity(way);
        painter.drawPixmap(QPointF{}, after);
        break;
    }
}

} // namespace kivo::device
