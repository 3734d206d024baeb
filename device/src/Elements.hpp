#pragma once

#include <kivo/platform/ui/Accessibility.hpp>
#include <kivo/platform/ui/View.hpp>

#include <QFocusFrame>
#include <QPushButton>
#include <QWidget>
#include <functional>
#include <memory>

namespace kivo::device {

/// A button of the tree for the keyboard and for assistive technology. The widget draws only the mark of a press.
class ButtonControl final : public QPushButton {
public:
    ButtonControl(std::shared_ptr<platform::View> view, std::function<void()> changed, QWidget* parent);

    /// Sets the radius of the mark's corners, in Qt's pixels.
    void setCornerRadius(double radius) { cornerRadius_ = radius; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    std::shared_ptr<platform::View> view_;
    std::function<void()> changed_;
    double cornerRadius_ = 0;
};

/// A view of the tree that can be read but not operated.
class ReadableElement : public QWidget {
public:
    ReadableElement(platform::AccessibilityRole role, QWidget* parent);

    platform::AccessibilityRole role() const { return role_; }

private:
    platform::AccessibilityRole role_;
};

/// An element without a place, whose arrival makes a screen reader tell its name, wherever the person is.
class Announcer final : public ReadableElement {
public:
    explicit Announcer(QWidget* phone);

    void announce(const QString& text);
};

/// The mark around the control with the focus: a light line between dark ones, which stands out from every ground.
/// The ring around the focused element. Assistive technology never hears of the ring: Qt does not tell focus frames.
class FocusRing final : public QFocusFrame {
public:
    explicit FocusRing(QWidget* phone);

    /// Shows the ring around a place on the phone, or hides the ring when the place is empty.
    void follow(const QRect& place, double cornerRadius);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double cornerRadius_ = 0;
};

} // namespace kivo::device
