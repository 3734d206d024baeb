#include "Transition.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/NavigationController.hpp>

#include <memory>

namespace kivo::device {
namespace {

/// The distance that the screen below moves while another screen is pushed over it, as a part of the width.
constexpr double parallax = 0.3;

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

void Transition::draw(QPainter& painter, const QPixmap& after, QSizeF size, double progress) const {
    const auto rest = 1 - progress;
    const auto [width, height] = std::pair{size.width(), size.height()};
    switch (kind_) {
    case Kind::push:
        painter.drawPixmap(QPointF{-parallax * width * progress, 0}, before_);
        painter.drawPixmap(QPointF{width * rest, 0}, after);
        break;
    case Kind::pop:
        painter.drawPixmap(QPointF{-parallax * width * rest, 0}, after);
        painter.drawPixmap(QPointF{width * progress, 0}, before_);
        break;
    case Kind::present:
        painter.drawPixmap(QPointF{}, before_);
        painter.drawPixmap(QPointF{0, height * rest}, after);
        break;
    case Kind::dismiss:
        painter.drawPixmap(QPointF{}, after);
        painter.drawPixmap(QPointF{0, height * progress}, before_);
        break;
    case Kind::fade:
    case Kind::none:
        painter.drawPixmap(QPointF{}, before_);
        painter.setOpacity(progress);
        painter.drawPixmap(QPointF{}, after);
        break;
    }
}

} // namespace kivo::device
