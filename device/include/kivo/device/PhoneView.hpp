#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QWidget>
#include <memory>

namespace kivo::device {

/// Shows a window's screens, and passes a person's input to them: keyboard, input methods, clipboard, mouse, wheel,
/// assistive technology. The view is as large as the window, and becomes the window's observer.
///
/// Once a part of the view has the focus, the focus stays in the view when the screen changes. Typing then goes to the
/// screen's first field unless another field is edited; an alert takes the focus and answers Enter and Escape.
class KIVO_EXPORT PhoneView final : public QWidget {
public:
    explicit PhoneView(std::shared_ptr<platform::Window> window, QWidget* parent = nullptr);
    ~PhoneView() override;

    const std::shared_ptr<platform::Window>& shownWindow() const;

    /// Whether screens slide in and out. The default is true where Qt has a display.
    void setAnimated(bool animated);

    /// Updates the picture and the controls from the tree now. The view does so by itself before Qt waits for events.
    void synchronize();

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    class State;

    std::shared_ptr<State> state_;
};

} // namespace kivo::device
