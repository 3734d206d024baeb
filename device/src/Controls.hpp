#pragma once

#include "FieldEdit.hpp"

#include <kivo/platform/ui/Window.hpp>

#include <QPushButton>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace kivo::device {

/// A button of the tree for the keyboard and for assistive technology. The widget draws only the marks of a press and
/// of the focus.
class ButtonControl final : public QPushButton {
public:
    ButtonControl(std::shared_ptr<platform::View> view, std::function<void()> changed, QWidget* parent);

    /// Sets the radius of the marks' corners, in Qt's pixels.
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
class ReadableElement final : public QWidget {
public:
    ReadableElement(platform::AccessibilityRole role, QWidget* parent);

    platform::AccessibilityRole role() const { return role_; }

private:
    platform::AccessibilityRole role_;
};

/// The widgets over the phone's picture, one for each view of the topmost screen that has a role. Keyboard, input
/// methods and assistive technology work on the widgets; the mouse passes through them.
class Controls {
public:
    /// `changed` is called after a person's action on a control.
    Controls(QWidget& phone, std::function<void()> changed);
    Controls(const Controls&) = delete;
    Controls& operator=(const Controls&) = delete;
    ~Controls();

    /// Sets the number of pixels, in Qt's device-independent ones, that a point takes; from the next update on.
    void setZoom(double zoom) { zoom_ = zoom; }

    /// Updates the widgets and the focus from the tree. The focus stays in the phone when its widget leaves, and an
    /// alert takes the focus; a focus elsewhere in the host's window stays there. With `fieldsPaint` false no field
    /// paints itself.
    void synchronize(platform::Window& window, bool fieldsPaint);

    /// The line edit of the topmost field that a person can reach; null without such a field.
    FieldEdit* firstEdit(const platform::Window& window) const;

    FieldEdit* editOf(const platform::TextField& field) const;

    /// Shows whether a person holds down the button of a view or, for a view without a button, of the nearest view
    /// around it.
    void setDown(platform::View& view, bool down) const;

    /// Draws the fields that paint themselves.
    void drawFields(QPainter& painter) const;

private:
    struct Control {
        std::weak_ptr<platform::View> view;
        std::unique_ptr<QWidget> widget;
    };

    std::unique_ptr<QWidget> make(const std::shared_ptr<platform::View>& view);
    void remove(Control& control);
    void place(platform::View& view, QWidget& widget) const;
    /// Gives the focus to the phone if `widget` has the focus and cannot keep it.
    void keepFocus(const QWidget& widget, bool canHaveFocus);
    bool isFocused(const QWidget& widget) const;
    /// Whether the keyboard's input goes to the phone, and not to another part of the host's window.
    bool hasKeyboard() const;
    void moveFocus(const std::vector<std::shared_ptr<platform::View>>& views);
    bool moveFocusToAlert(const std::vector<std::shared_ptr<platform::View>>& views);

    QWidget& phone_;
    std::function<void()> changed_;
    double zoom_ = 1;
    std::map<const platform::View*, Control> controls_;
};

} // namespace kivo::device
