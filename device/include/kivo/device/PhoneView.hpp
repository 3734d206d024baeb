#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QImage>
#include <QWidget>
#include <chrono>
#include <functional>
#include <memory>

namespace kivo::device {

/// Shows a window's screens, and passes a person's input to them: keyboard, input methods, clipboard, mouse, wheel,
/// assistive technology. The view is as large as the window with its zoom, and becomes the window's observer.
///
/// Once a part of the view has the focus, the focus stays in the view when the screen changes. Typing then goes to the
/// screen's first field unless another field is edited. Tab and the arrow keys go through the controls in the order of
/// reading, Enter and the space key press a button, Escape ends an edit or goes back, and the arrow and page keys
/// scroll where no control can be reached. An alert keeps the focus, answers Enter and Escape, and gives the focus
/// back. A field whose value was refused takes the focus.
class KIVO_EXPORT PhoneView final : public QWidget {
public:
    /// Shows `window`, which must not be null. Qt's `parent` owns the view, if there is one.
    explicit PhoneView(std::shared_ptr<platform::Window> window, QWidget* parent = nullptr);
    ~PhoneView() override;

    /// The window that the view shows; never null.
    const std::shared_ptr<platform::Window>& shownWindow() const;

    /// Whether what happens on the display moves: a screen that comes or goes, a box that gets a character, a code that
    /// was refused. False for a person who has asked for less motion; wheels turn all the same. The default is true
    /// where Qt has a display.
    void setAnimated(bool animated);

    /// Sets the clock of all motion, for tests, which then call `synchronize` after each step of the clock. The default
    /// is the machine's steady clock. Must not be empty.
    void setClock(std::function<std::chrono::milliseconds()> clock);

    /// Draws everything `zoom` times as large, from 0.1 to 4; 1 at first. The lines stay sharp.
    void setZoom(double zoom);
    double zoom() const;

    /// The display as it is at this moment, its motion included, with `scale` pixels for a point; without the caret and
    /// the marks of a press and of the keyboard.
    QImage picture(double scale = 2);

    /// Updates the picture and the controls from the tree now. The view does so by itself before Qt waits for events.
    void synchronize();

    /// The window's size, with one pixel for a point times the zoom.
    QSize sizeHint() const override;

protected:
    /// What Qt tells a widget: the view draws its window, and hands a person's input on.
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void timerEvent(QTimerEvent* event) override;

private:
    class State;

    std::shared_ptr<State> state_;
};

} // namespace kivo::device
