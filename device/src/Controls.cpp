#include "Controls.hpp"

#include "Content.hpp"
#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Keyboard.hpp>

#include <QApplication>
#include <QPainter>
#include <algorithm>
#include <ranges>
#include <utility>

namespace kivo::device {
namespace {

using platform::AccessibilityElement;
using platform::AccessibilityRole;
using platform::View;

/// The margin of a line edit at the left and the right of its text.
constexpr double editMargin = 2;
/// The bound on the remembered places of the focus.
constexpr std::size_t mostLeft = 16;

bool isControl(const AccessibilityElement& element) {
    return element.role == AccessibilityRole::button || element.role == AccessibilityRole::textField;
}

bool isCovered(platform::Window& window, View& view, const QRectF& part) {
    const auto hit = window.hitTest({part.center().x(), part.center().y()});
    return hit && !hit->isDescendantOf(view) && !view.isDescendantOf(*hit);
}

} // namespace

Controls::Controls(QWidget& phone, std::function<void()> changed)
    : phone_{phone}
    , changed_{std::move(changed)}
    , ring_{*std::make_unique<FocusRing>(&phone).release()}
    , announcer_{*std::make_unique<Announcer>(&phone).release()}
    , focusChanges_{QObject::connect(qApp, &QApplication::focusChanged, &phone, [this] { markFocus(); })} {}

Controls::~Controls() {
    QObject::disconnect(focusChanges_);
    // Otherwise Qt passes the focus from a field that is destroyed to the next field, which begins to edit.
    for (const auto& [view, control] : controls_) {
        if (control.widget) {
            control.widget->setFocusPolicy(Qt::NoFocus);
        }
    }
    for (const auto& [view, control] : controls_) {
        delete control.widget.data();
    }
}

QWidget* Controls::widgetOf(const View& view) const {
    const auto found = controls_.find(&view);
    return found == controls_.end() ? nullptr : found->second.widget.data();
}

QWidget& Controls::make(const Element& element) {
    auto* parent = &phone_;
    for (auto around = element.view->superview(); around; around = around->superview()) {
        // What an alert asks is told with the focus on one of its answers.
        if (auto* const alert = dynamic_cast<ReadableElement*>(widgetOf(*around))) {
            parent = alert;
            break;
        }
    }
    if (auto field = std::dynamic_pointer_cast<platform::TextField>(element.view)) {
        return *std::make_unique<FieldEdit>(std::move(field), changed_, parent).release();
    }
    if (element.role == AccessibilityRole::button) {
        return *std::make_unique<ButtonControl>(element.view, changed_, parent).release();
    }
    return *std::make_unique<ReadableElement>(element.role, parent).release();
}

void Controls::removeMissing() {
    const auto isMissing = [&](const auto& entry) {
        return std::ranges::find(elements_, entry.second.view.lock(), &Element::view) == elements_.end();
    };
    for (const auto& entry : controls_ | std::views::filter(isMissing)) {
        keepFocus(entry.second, false);
    }
    std::erase_if(controls_, [&](const auto& entry) {
        const auto& widget = entry.second.widget;
        if (!isMissing(entry)) {
            return widget.isNull();
        }
        if (widget) {
            widget->hide();
            // Deleted later: an event of this widget may have removed the view.
            widget->deleteLater();
        }
        return true;
    });
}

void Controls::keepFocus(const Control& control, bool canHaveFocus) {
    if (!canHaveFocus && control.widget && isFocused(*control.widget)) {
        left_.push_back(control.view);
        if (left_.size() > mostLeft) {
            left_.erase(left_.begin());
        }
        // Otherwise Qt passes the focus to any widget of the host's window.
        phone_.setFocus();
    }
}

bool Controls::isFocused(const QWidget& widget) const {
    return phone_.window()->focusWidget() == &widget;
}

bool Controls::hasKeyboard() const {
    const auto* const focused = phone_.window()->focusWidget();
    return focused == nullptr || focused == &phone_ || phone_.isAncestorOf(focused);
}

void Controls::place(const Element& element, QWidget& widget) const {
    auto& view = *element.view;
    auto area = visiblePart(view);
    if (const auto* edit = dynamic_cast<FieldEdit*>(&widget); edit != nullptr && !area.isEmpty()) {
        const auto text = textArea(*edit->field()).translated(toQt(view.frameOnScreen()).topLeft());
        area = text.adjusted(-editMargin, 0, editMargin, 0);
    }
    if (auto* button = dynamic_cast<ButtonControl*>(&widget)) {
        button->setCornerRadius(view.layer().cornerRadius * zoom_);
    }
    auto wanted = QRectF{area.topLeft() * zoom_, area.size() * zoom_}.toRect();
    if (widget.parentWidget() != &phone_) {
        wanted.translate(-widget.parentWidget()->pos());
    }
    if (wanted != widget.geometry()) {
        widget.setGeometry(wanted);
    }
    const auto name = toQt(element.name.empty() ? view.identifier() : element.name);
    if (name != widget.accessibleName()) {
        widget.setAccessibleName(name);
    }
    if (const auto hint = toQt(element.hint); hint != widget.accessibleDescription()) {
        widget.setAccessibleDescription(hint);
    }
    widget.setObjectName(toQt(view.identifier()));
}

void Controls::update(const Element& element, platform::Window& window, bool fieldsPaint) {
    auto& view = *element.view;
    auto& control = controls_[&view];
    if (control.widget == nullptr) {
        control = {.view = element.view, .widget = &make(element)};
    }
    auto& widget = *control.widget;
    const auto part = visiblePart(view);
    place(element, widget);
    const bool covered = isControl(element) && !part.isEmpty() && isCovered(window, view, part);
    // The focus can go to a control that is scrolled away, which then scrolls into view.
    const bool visible = !covered && (!part.isEmpty() || (isControl(element) && isInScrollView(view)));
    if (auto* edit = dynamic_cast<FieldEdit*>(&widget)) {
        edit->pull(zoom_);
        // A field that is covered or cut off is drawn with the tree of views, which clips the field.
        edit->setPaintsItself(fieldsPaint && !covered && part == toQt(view.frameOnScreen()));
    }
    keepFocus(control, visible && !element.isDisabled);
    widget.setEnabled(!element.isDisabled);
    widget.setVisible(visible);
}

void Controls::arrange() {
    std::vector<QWidget*> order;
    QWidget* former = &phone_;
    for (const auto& element : elements_) {
        auto* const widget = widgetOf(*element.view);
        order.push_back(widget);
        // Qt leaves the order as it is where one of the two takes no focus.
        if (widget->focusPolicy() != Qt::NoFocus) {
            QWidget::setTabOrder(former, widget);
            former = widget;
        }
    }
    if (order != std::exchange(order_, order)) {
        // Assistive technology finds the widgets in the order in which they lie over one another.
        std::ranges::for_each(order, &QWidget::raise);
        announcer_.raise();
        ring_.raise();
    }
}

void Controls::synchronize(platform::Window& window, bool fieldsPaint) {
    elements_ = platform::accessibilityElements(window);
    removeMissing();
    for (const auto& element : elements_) {
        update(element, window, fieldsPaint);
    }
    arrange();
    if (hasKeyboard()) {
        chooseFocus();
    }
    markFocus();
    std::string told;
    for (const auto& text : announcements_.next(window, elements_)) {
        told += (told.empty() ? "" : " ") + text;
    }
    if (!told.empty()) {
        announcer_.announce(toQt(told));
    }
}

FieldEdit* Controls::firstEdit() const {
    const auto found = std::ranges::find_if(elements_, [&](const Element& element) {
        return element.role == AccessibilityRole::textField && canTakeFocus(element);
    });
    return found == elements_.end() ? nullptr : dynamic_cast<FieldEdit*>(widgetOf(*found->view));
}

FieldEdit* Controls::editOf(const platform::TextField& field) const {
    return dynamic_cast<FieldEdit*>(widgetOf(field));
}

std::shared_ptr<View> Controls::focusable(std::string_view identifier) const {
    const auto found = std::ranges::find_if(elements_, [&](const Element& element) {
        return element.view->identifier() == identifier && canTakeFocus(element);
    });
    return found == elements_.end() ? nullptr : found->view;
}

void Controls::setDown(View& view, bool down) const {
    for (auto around = view.shared_from_this(); around; around = around->superview()) {
        if (auto* const button = dynamic_cast<ButtonControl*>(widgetOf(*around))) {
            button->setDown(down && button->isEnabled());
            return;
        }
    }
}

void Controls::drawFields(QPainter& painter) const {
    for (const auto& [view, control] : controls_) {
        auto* const edit = dynamic_cast<FieldEdit*>(control.widget.data());
        if (edit != nullptr && edit->isVisible() && edit->paintsItself()) {
            edit->render(&painter, edit->pos(), {}, QWidget::DrawChildren);
        }
    }
}

} // namespace kivo::device
