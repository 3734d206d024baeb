#pragma once

#include "Controls.hpp"

#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QMouseEvent>
#include <QPointer>
#include <functional>
#include <memory>

namespace kivo::device {

/// The mouse as a finger on the display: taps, drags to scroll, and selects in fields.
class Finger {
public:
    explicit Finger(Controls& controls)
        : controls_{controls} {}

    /// Sets the number of pixels, in Qt's device-independent ones, that a point takes.
    void setZoom(double zoom) { zoom_ = zoom; }

    /// `synchronize` updates the controls, so that the line edit of a touched field can take the event.
    void press(platform::Window& window, QMouseEvent& event, const std::function<void()>& synchronize);
    void move(QMouseEvent& event);
    void release(platform::Window& window, QMouseEvent& event);
    /// Returns whether something was scrolled.
    bool wheel(platform::Window& window, QPointF position, double distance) const;

private:
    /// Passes the event to the line edit in which the press began.
    void pass(QMouseEvent& event);

    /// The place of an event on the display, in points.
    platform::Point pointOf(QPointF position) const { return {position.x() / zoom_, position.y() / zoom_}; }

    Controls& controls_;
    double zoom_ = 1;
    std::weak_ptr<platform::View> pressed_;
    std::weak_ptr<platform::ScrollView> scrolled_;
    QPointer<FieldEdit> edit_;
    platform::Point start_{};
    double startOffset_ = 0;
    bool isScrolling_ = false;
};

} // namespace kivo::device
