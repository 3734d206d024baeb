#include "Finger.hpp"

#include <QCoreApplication>
#include <cmath>
#include <utility>

namespace kivo::device {
namespace {

/// The distance in points from which a movement is a drag and no tap.
constexpr double slip = 8;

std::shared_ptr<platform::ScrollView> scrollAround(std::shared_ptr<platform::View> view) {
    for (; view; view = view->superview()) {
        if (auto scroll = std::dynamic_pointer_cast<platform::ScrollView>(view)) {
            return scroll;
        }
    }
    return nullptr;
}

} // namespace

void Finger::press(platform::Window& window, QMouseEvent& event, const std::function<void()>& synchronize) {
    start_ = pointOf(event.position());
    isScrolling_ = false;
    edit_ = nullptr;
    const auto hit = window.hitTest(start_);
    pressed_ = hit;
    const auto scroll = scrollAround(hit);
    scrolled_ = scroll;
    startOffset_ = scroll ? scroll->contentOffset() : 0;
    if (const auto field = std::dynamic_pointer_cast<platform::TextField>(hit)) {
        pressed_.reset();
        field->touch();
        synchronize();
        if (field->isFirstResponder()) {
            edit_ = controls_.editOf(*field);
            pass(event);
        }
    } else if (hit) {
        controls_.setDown(*hit, true);
    }
}

void Finger::move(QMouseEvent& event) {
    if (edit_) {
        pass(event);
        return;
    }
    const auto distance = pointOf(event.position()).y - start_.y;
    const auto scroll = scrolled_.lock();
    isScrolling_ = isScrolling_ || (scroll && std::abs(distance) > slip);
    if (isScrolling_ && scroll) {
        if (const auto view = std::exchange(pressed_, {}).lock()) {
            controls_.setDown(*view, false);
        }
        scroll->setContentOffset(startOffset_ - distance);
    }
}

void Finger::release(platform::Window& window, QMouseEvent& event) {
    if (edit_) {
        pass(event);
        edit_ = nullptr;
        return;
    }
    const auto view = std::exchange(pressed_, {}).lock();
    if (!view) {
        return;
    }
    controls_.setDown(*view, false);
    if (window.hitTest(pointOf(event.position())) == view) {
        view->touch();
    }
}

bool Finger::wheel(platform::Window& window, QPointF position, double distance) const {
    const auto scroll = scrollAround(window.hitTest(pointOf(position)));
    const auto former = scroll ? scroll->contentOffset() : 0;
    if (scroll) {
        scroll->setContentOffset(former - distance / zoom_);
    }
    return scroll && scroll->contentOffset() != former;
}

void Finger::pass(QMouseEvent& event) {
    QMouseEvent passed{event.type(),          edit_->mapFromParent(event.position().toPoint()),
                       event.scenePosition(), event.globalPosition(),
                       event.button(),        event.buttons(),
                       event.modifiers()};
    QCoreApplication::sendEvent(edit_, &passed);
}

} // namespace kivo::device
