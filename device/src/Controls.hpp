#pragma once

#include "Elements.hpp"
#include "FieldEdit.hpp"

#include <kivo/platform/ui/Accessibility.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QPointer>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace kivo::device {

/// The widgets over the phone's picture, one for each view that assistive technology tells, in the order of reading.
/// Keyboard, input methods and assistive technology work on the widgets; the mouse passes through them.
class Controls {
public:
    /// `changed` is called after a person's action on a control.
    Controls(QWidget& phone, std::function<void()> changed);
    Controls(const Controls&) = delete;
    Controls& operator=(const Controls&) = delete;
    ~Controls();

    /// Sets the number of pixels, in Qt's device-independent ones, that a point takes; from the next update on.
    void setZoom(double zoom) { zoom_ = zoom; }

    /// Updates the widgets and the focus from the tree, and announces what has appeared. The focus stays in the phone
    /// when its widget leaves, and returns with the widget; an alert and a refused value take the focus. A focus
    /// elsewhere in the host's window stays there. With `fieldsPaint` false no field paints itself.
    void synchronize(platform::Window& window, bool fieldsPaint);

    /// Moves the focus from its control to the next or the former one, at the ends only in an alert. Returns whether
    /// the focus moved.
    bool moveFocus(bool next);

    /// Whether the focus must stay in the phone: an alert waits for an answer.
    bool keepsFocus() const;

    /// The line edit of the topmost field that a person can reach; null without such a field.
    FieldEdit* firstEdit() const;

    FieldEdit* editOf(const platform::TextField& field) const;

    /// The view of that identifier among the shown ones that take the focus; null without such a view.
    std::shared_ptr<platform::View> focusable(std::string_view identifier) const;

    /// Shows whether a person holds down the button of a view or, for a view without a button, of the nearest view
    /// around it.
    void setDown(platform::View& view, bool down) const;

    /// Draws the fields that paint themselves.
    void drawFields(QPainter& painter) const;

private:
    using Element = platform::AccessibilityElement;

    struct Control {
        std::weak_ptr<platform::View> view;
        /// The phone or the widget of an alert around owns the widget.
        QPointer<QWidget> widget;
    };

    QWidget* widgetOf(const platform::View& view) const;
    QWidget& make(const Element& element);
    void removeMissing();
    void update(const Element& element, platform::Window& window, bool fieldsPaint);
    void place(const Element& element, QWidget& widget) const;
    void arrange();
    /// Gives the focus to the phone if `widget` has the focus and cannot keep it.
    void keepFocus(const Control& control, bool canHaveFocus);
    bool isFocused(const QWidget& widget) const;
    /// Whether the keyboard's input goes to the phone, and not to another part of the host's window.
    bool hasKeyboard() const;
    bool canTakeFocus(const Element& element) const;
    bool takeFocus(const Element& element) const;
    void chooseFocus();
    bool focusAlert();
    bool focusEditedField();
    bool focusRefusedField();
    void returnFocus();
    void markFocus();

    QWidget& phone_;
    std::function<void()> changed_;
    double zoom_ = 1;
    std::map<const platform::View*, Control> controls_;
    std::vector<Element> elements_;
    std::vector<QWidget*> order_;
    /// The views from which the focus was taken, the last one at the end, and the views whose values were refused.
    std::vector<std::weak_ptr<platform::View>> left_;
    std::vector<std::weak_ptr<platform::View>> refused_;
    platform::AccessibilityAnnouncements announcements_;
    FocusRing& ring_;
    Announcer& announcer_;
    QMetaObject::Connection focusChanges_;
};

} // namespace kivo::device
