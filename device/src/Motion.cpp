#include "Motion.hpp"

#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/platform/ui/AlertController.hpp>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <utility>

namespace kivo::device {
namespace {

using namespace std::chrono_literals;

constexpr MotionTime fillTime = 240ms;
constexpr MotionTime shakeTime = 420ms;
constexpr double shakeReach = 9; // points to each side, at first
constexpr double shakeTurns = 3;
constexpr double ringReach = 4; // points around a field that lights up

/// The part of a motion that is over, from 0 to 1.
double progress(MotionTime start, MotionTime now, MotionTime length) {
    return std::clamp(static_cast<double>((now - start).count()) / static_cast<double>(length.count()), 0.0, 1.0);
}

void eachField(const std::shared_ptr<platform::View>& view,
               const std::function<void(const std::shared_ptr<platform::TextField>&)>& visit) {
    if (view->isHidden() || view->alpha() <= 0) {
        return;
    }
    if (const auto field = std::dynamic_pointer_cast<platform::TextField>(view)) {
        visit(field);
    }
    for (const auto& subview : view->subviews()) {
        eachField(subview, visit);
    }
}

void drawFill(QPainter& painter, const platform::TextField& field, double done) {
    auto color = toQt(field.tintColor().value_or(platform::Color::systemBlue()), field.userInterfaceStyle());
    const auto area = toQt(field.frameOnScreen());
    const auto radius = field.layer().cornerRadius;
    const auto grown = ringReach * done;
    painter.setPen(Qt::NoPen);
    color.setAlphaF(static_cast<float>(0.22 * (1 - done)));
    painter.setBrush(color);
    painter.drawRoundedRect(area, radius, radius);
    painter.setBrush(Qt::NoBrush);
    color.setAlphaF(static_cast<float>(0.7 * (1 - done)));
    painter.setPen(QPen{color, 1.5});
    painter.drawRoundedRect(area.adjusted(-grown, -grown, grown, grown), radius + grown, radius + grown);
}

} // namespace

void Motion::learn(const platform::Window& window) {
    std::map<const platform::TextField*, Known> found;
    for (const auto& view : window.reachableViews()) {
        eachField(view,
                  [&](const auto& field) { found[field.get()] = {.field = field, .hasText = !field->text().empty()}; });
    }
    known_ = std::move(found);
}

QRectF Motion::rowsOfFields() const {
    QRectF rows;
    for (const auto& [address, known] : known_) {
        if (const auto field = known.field.lock()) {
            rows |= visiblePart(*field);
        }
    }
    return rows;
}

void Motion::follow(const platform::Window& window, MotionTime now, bool isShown, bool isPassing) {
    std::ptrdiff_t emptied = 0;
    for (auto& [address, known] : known_) {
        const auto field = known.field.lock();
        const bool hasText = field && !field->text().empty();
        if (hasText && !known.hasText && isShown) {
            fills_.push_back({.field = field, .start = now});
        }
        emptied += field && !hasText && known.hasText ? 1 : 0;
        known.hasText = hasText;
    }
    const bool isEmpty = std::ranges::none_of(known_, [](const auto& each) { return each.second.hasText; });
    // A person empties one field after the other.
    if (isShown && isEmpty && emptied > 1) {
        shake_.isDue = true;
    }
    if (!std::dynamic_pointer_cast<platform::AlertController>(window.visibleViewController())) {
        const auto former = std::move(known_);
        learn(window);
        const bool isSameScreen =
            std::ranges::any_of(known_, [&](const auto& each) { return former.contains(each.first); });
        shake_.isDue = shake_.isDue && isShown && isSameScreen;
        if (shake_.isDue && !isPassing) {
            const auto rows = rowsOfFields();
            shake_ = {.area = {0, rows.top() - ringReach, window.frame().size.width, rows.height() + 2 * ringReach},
                      .start = now,
                      .isRunning = true};
        }
    }
    if (!isShown) {
        fills_.clear();
        shake_ = {};
    }
}

std::vector<QRectF> Motion::areas(MotionTime now) {
    std::vector<QRectF> areas;
    for (const auto& [weak, start] : fills_) {
        if (const auto field = weak.lock()) {
            const auto reach = ringReach + 2;
            areas.push_back(toQt(field->frameOnScreen()).adjusted(-reach, -reach, reach, reach));
        }
    }
    if (shake_.isRunning) {
        areas.push_back(shake_.area);
    }
    std::erase_if(fills_, [&](const Fill& each) { return each.field.expired() || now - each.start >= fillTime; });
    shake_.isRunning = shake_.isRunning && now - shake_.start < shakeTime;
    return areas;
}

void Motion::draw(QPainter& painter, const QPixmap& frame, double pixelsOfPoint, MotionTime now) const {
    if (shake_.isRunning) {
        const auto done = progress(shake_.start, now, shakeTime);
        const auto offset = shakeReach * (1 - done) * std::sin(2 * std::numbers::pi * shakeTurns * done);
        const auto& area = shake_.area;
        painter.drawPixmap(area.translated(offset, 0), frame,
                           QRectF{area.topLeft() * pixelsOfPoint, area.size() * pixelsOfPoint});
    }
    for (const auto& [weak, start] : fills_) {
        if (const auto field = weak.lock()) {
            drawFill(painter, *field, progress(start, now, fillTime));
        }
    }
}

} // namespace kivo::device
