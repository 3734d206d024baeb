#pragma once

#include "Models.hpp"

#include <kivo/device/PhoneView.hpp>

#include <QImage>
#include <QString>
#include <QTimer>
#include <QWidget>

namespace kivo::device::app {

/// The phone on the desk: its body, its display, and the bars that the phone itself draws.
class PhoneFrame final : public QWidget {
public:
    /// Shows `phone`, which becomes a child.
    explicit PhoneFrame(device::PhoneView* phone, QWidget* parent = nullptr);

    /// Gives the window of the phone the display of `model`.
    void setModel(const Model& model, bool isLandscape);

    /// Whether the phone shrinks until it fits into the room; otherwise a point takes one pixel.
    void setFitted(bool isFitted);

    /// Sets the time in the status bar; empty for the time of the day, as at first.
    void setTime(const QString& time);

    /// The display with its status bar, as a person would keep it: `scale` pixels for a point.
    QImage picture(double scale);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class Glass;

    void place();
    /// Looks at the display for the colour in which the bars can be read.
    void takeInk();
    QString timeOfDay() const;
    Qt::LayoutDirection readingDirection() const;
    /// The display in this widget, in points of the display.
    QRectF display() const;

    device::PhoneView* phone_;
    Glass* glass_;
    Model model_ = usualModel();
    bool isLandscape_ = false;
    bool isFitted_ = true;
    bool isTakingInk_ = false;
    QString time_;
    QTimer inkIsDue_;
    QTimer minute_;
};

} // namespace kivo::device::app
