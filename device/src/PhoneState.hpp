#pragma once

#include "Controls.hpp"
#include "Drawing.hpp"
#include "Finger.hpp"
#include "Motion.hpp"
#include "Transition.hpp"

#include <kivo/device/PhoneView.hpp>

#include <QImage>
#include <QPixmap>
#include <QTimer>
#include <functional>
#include <memory>

namespace kivo::device {

/// The picture of a phone's window and all that keeps it true: repaints, passages from screen to screen, and motion.
class PhoneView::State final : public platform::WindowObserver {
public:
    State(PhoneView& phone, std::shared_ptr<platform::Window> shown);

    void viewDidChange(platform::View& view) override;
    void screenDidChange() override;

    void synchronize();

    /// Called for every block of events, and therefore quick when nothing has changed.
    void synchronizeSilentChanges();

    void paint(QPainter& painter, const QRect& part);

    QImage picture(double scale);

    /// Moves everything that moves to its place at the present time.
    void tick();

    /// A person's wish to leave: cancels an alert, ends an edit, or goes back. Returns whether there was something to
    /// leave.
    bool leave();

    void setZoom(double zoom);

    double zoom() const { return zoom_; }

    QSize sizeInPixels() const;

    std::shared_ptr<platform::Window> window;
    Controls controls;
    Finger finger{controls};
    bool isAnimated;
    std::function<MotionTime()> clock;

private:
    void schedule();
    /// The area in the view's own pixels.
    QRect inView(const QRectF& points) const;
    QSize frameSize() const;
    void beginTransition();
    /// Draws the changed parts of the picture.
    void redraw();
    void updateMotion();
    /// Runs the timer while a view moves.
    void turn();

    PhoneView& phone_;
    double zoom_ = 1;
    int timer_ = 0;
    int timerInterval_ = 0;
    Repaints repaints_;
    QPixmap frame_;
    Transition transition_;
    Motion motion_;
    /// Fires when the pending events have been handled.
    QTimer synchronizing_;
    Depth depth_;
    double turn_ = 0;
    bool isScheduled_ = false;
    bool isSynchronizing_ = false;
    bool isOtherScreen_ = false;
    bool isWhollyNew_ = true;
};

} // namespace kivo::device
