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

    /// `synchronize` updates the controls, so that the line edit of a touched field can take the event.
    void press(platform::Window& window, QMouseEvent& event, const std::function<void()>& synchronize);
    void move(QMouseEvent& event);
    void release(platform::Window& window, QMouseEvent& event);
    /// Returns whether something was scrolled.
    static bool wheel(platform::Window& window, QPointF position, double distance);

private:
    /// Passes the event to the line edit in which the press began.
    void pass(QMouseEvent& event);

    Controls& controls_;
    std::weak_ptr<platform::View> pressed_;
    std::weak_ptr<platform::ScrollView> scrolled_;
    QPointer<FieldEdit> edit_;
    QPointF start_;
    double startOffset_ = 0;
    bool isScrolling_ = false;
};

} // namespace kivo::device
