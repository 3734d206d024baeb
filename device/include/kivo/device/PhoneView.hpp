#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QWidget>
#include <memory>

namespace kivo::device {

/// Shows a window's screens as they are at every moment, and takes a person's input for them: keyboard, input methods,
/// clipboard, mouse, wheel, assistive technology. As large as the window, whose observer it becomes.
class KIVO_EXPORT PhoneView final : public QWidget {
public:
    explicit PhoneView(std::shared_ptr<platform::Window> window, QWidget* parent = nullptr);
    ~PhoneView() override;

    const std::shared_ptr<platform::Window>& shownWindow() const;

    /// Whether screens slide in and out; at first they do where there is a display.
    void setAnimated(bool animated);

    /// Brings the picture and the controls in line with the tree now. It happens by itself before Qt waits for events.
    void synchronize();

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    class State;

    std::shared_ptr<State> state_;
};

} // namespace kivo::device
