#include "Controls.hpp"

#include "Content.hpp"
#include "Drawing.hpp"
#include "Text.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Keyboard.hpp>

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

namespace kivo::device {
namespace {

using platform::AccessibilityRole;
using platform::View;
using Views = std::vector<std::shared_ptr<View>>;

/// The margin of a line edit at the left and the right of its text.
constexpr double editMargin = 2;

bool isControl(AccessibilityRole role) {
    return role == AccessibilityRole::button || role == AccessibilityRole::textField;
}

void collect(const std::shared_ptr<View>& view, Views& found) {
    if (view->isHidden() || view->alpha() == 0) {
        return;
    }
    const auto role = view->accessibilityRole();
    if (isControl(role) || role == AccessibilityRole::progress || role == AccessibilityRole::alert ||
        (role != AccessibilityRole::none && !view->accessibilityLabel().empty())) {
        found.push_back(view);
    }
    for (const auto& subview : view->subviews()) {
        collect(subview, found);
    }
}

Views reachable(const platform::Window& window) {
    Views found;
    for (const auto& view : window.reachableViews()) {
        collect(view, found);
    }
    return found;
}

std::string nameOf(const View& view) {
    if (auto label = view.accessibilityLabel(); !label.empty()) {
        return label;
    }
    switch (view.accessibilityRole()) {
    case AccessibilityRole::progress:
        return "Please wait";
    case AccessibilityRole::alert: {
        std::string texts;
        for (const auto& subview : view.subviews()) {
            if (subview->accessibilityRole() == AccessibilityRole::text && !subview->shownText().empty()) {
                texts += (texts.empty() ? "" : ". ") + subview->shownText();
            }
        }
        return texts;
    }
    default:
        return view.identifier();
    }
}

bool isCovered(platform::Window& window, View& view, const QRectF& part) {
    const auto hit = window.hitTest({part.center().x(), part.center().y()});
    return hit && !hit->isDescendantOf(view) && !view.isDescendantOf(*hit);
}

QAccessible::Role roleOf(platform::AccessibilityRole role) {
    switch (role) {
    case platform::AccessibilityRole::image:
        return QAccessible::Graphic;
    case platform::AccessibilityRole::progress:
        return QAccessible::Animation;
    case platform::AccessibilityRole::alert:
        return QAccessible::AlertMessage;
    default:
        return QAccessible::StaticText;
    }
}

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* const element = dynamic_cast<ReadableElement*>(object);
    return element == nullptr ? nullptr : new QAccessibleWidget{element, roleOf(element->role())};
}

/// Tells Qt the roles of readable elements, once for the process.
void makeElementsAccessible() {
    [[maybe_unused]] static const bool isDone = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
}

} // namespace

ButtonControl::ButtonControl(std::shared_ptr<View> view, std::function<void()> changed, QWidget* parent)
    : QPushButton{parent}
    , view_{std::move(view)}
    , changed_{std::move(changed)} {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    // A tap on a button leaves the keyboard with the field.
    setFocusPolicy(Qt::TabFocus);
    connect(this, &QPushButton::clicked, this, [this] {
        const auto touched = view_;
        touched->touch();
        changed_();
    });
}

void ButtonControl::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    if (isDown()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor{0, 0, 0, 50});
        painter.drawRoundedRect(rect(), cornerRadius_, cornerRadius_);
    }
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen{QColor{255, 149, 0}, 3});
        painter.drawRoundedRect(QRectF{rect()}.adjusted(2, 2, -2, -2), cornerRadius_, cornerRadius_);
    }
}

void ButtonControl::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QPushButton::keyPressEvent(event);
}

void ButtonControl::focusInEvent(QFocusEvent* event) {
    QPushButton::focusInEvent(event);
    view_->scrollIntoView();
    changed_();
}

ReadableElement::ReadableElement(AccessibilityRole role, QWidget* parent)
    : QWidget{parent}
    , role_{role} {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

Controls::Controls(QWidget& phone, std::function<void()> changed)
    : phone_{phone}
    , changed_{std::move(changed)} {
    makeElementsAccessible();
}

Controls::~Controls() {
    // Otherwise Qt passes the focus from a field that is destroyed to the next field, which begins to edit.
    for (const auto& [view, control] : controls_) {
        control.widget->setFocusPolicy(Qt::NoFocus);
    }
}

std::unique_ptr<QWidget> Controls::make(const std::shared_ptr<View>& view) {
    if (auto field = std::dynamic_pointer_cast<platform::TextField>(view)) {
        return std::make_unique<FieldEdit>(std::move(field), changed_, &phone_);
    }
    if (view->accessibilityRole() == AccessibilityRole::button) {
        return std::make_unique<ButtonControl>(view, changed_, &phone_);
    }
    return std::make_unique<ReadableElement>(view->accessibilityRole(), &phone_);
}

void Controls::remove(Control& control) {
    keepFocus(*control.widget, false);
    control.widget->hide();
    // Deleted later: an event of this widget may have removed the view.
    control.widget.release()->deleteLater();
}

void Controls::keepFocus(const QWidget& widget, bool canHaveFocus) {
    if (!canHaveFocus && isFocused(widget)) {
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

void Controls::place(View& view, QWidget& widget) const {
    auto area = visiblePart(view);
    if (const auto* edit = dynamic_cast<FieldEdit*>(&widget); edit != nullptr && !area.isEmpty()) {
        const auto text = textArea(*edit->field()).translated(toQt(view.frameOnScreen()).topLeft());
        area = text.adjusted(-editMargin, 0, editMargin, 0);
    }
    if (auto* button = dynamic_cast<ButtonControl*>(&widget)) {
        button->setCornerRadius(view.layer().cornerRadius * zoom_);
    }
    if (const auto wanted = QRectF{area.topLeft() * zoom_, area.size() * zoom_}.toRect(); wanted != widget.geometry()) {
        widget.setGeometry(wanted);
    }
    const auto name = toQt(nameOf(view));
    if (name != widget.accessibleName()) {
        widget.setAccessibleName(name);
    }
    widget.setObjectName(toQt(view.identifier()));
}

void Controls::synchronize(platform::Window& window, bool fieldsPaint) {
    const auto wanted = reachable(window);
    for (auto entry = controls_.begin(); entry != controls_.end();) {
        const auto view = entry->second.view.lock();
        if (!view || std::ranges::find(wanted, view) == wanted.end()) {
            remove(entry->second);
            entry = controls_.erase(entry);
        } else {
            ++entry;
        }
    }
    QWidget* former = &phone_;
    for (const auto& view : wanted) {
        auto& control = controls_[view.get()];
        if (control.widget == nullptr) {
            control = {.view = view, .widget = make(view)};
        }
        auto& widget = *control.widget;
        const auto part = visiblePart(*view);
        place(*view, widget);
        const bool operable = isControl(view->accessibilityRole());
        const bool covered = operable && !part.isEmpty() && isCovered(window, *view, part);
        // The focus can go to a control that is scrolled away, which then scrolls into view.
        const bool visible = !covered && (!part.isEmpty() || (operable && isInScrollView(*view)));
        if (auto* edit = dynamic_cast<FieldEdit*>(&widget)) {
            edit->pull(zoom_);
            // A field that is covered or cut off is drawn with the tree of views, which clips the field.
            edit->setPaintsItself(fieldsPaint && !covered && part == toQt(view->frameOnScreen()));
        }
        const bool enabled = !operable || view->isReachable();
        keepFocus(widget, visible && enabled);
        widget.setEnabled(enabled);
        widget.setVisible(visible);
        // Qt leaves the order as it is where one of the two takes no focus.
        if (widget.focusPolicy() != Qt::NoFocus) {
            QWidget::setTabOrder(former, &widget);
            former = &widget;
        }
    }
    if (hasKeyboard()) {
        moveFocus(wanted);
    }
}

bool Controls::moveFocusToAlert(const Views& views) {
    const auto alert = std::ranges::find(views, AccessibilityRole::alert, &View::accessibilityRole);
    if (alert == views.end()) {
        return false;
    }
    QWidget* first = nullptr;
    for (const auto& view : views) {
        auto* const widget = controls_.at(view.get()).widget.get();
        if (view->accessibilityRole() == AccessibilityRole::button && view->isDescendantOf(**alert)) {
            if (isFocused(*widget)) {
                return true;
            }
            first = first == nullptr ? widget : first;
        }
    }
    if (first != nullptr) {
        first->setFocus(Qt::OtherFocusReason);
    }
    return true;
}

void Controls::moveFocus(const Views& views) {
    if (moveFocusToAlert(views)) {
        return;
    }
    const auto responder = std::dynamic_pointer_cast<platform::TextField>(platform::Keyboard::firstResponder());
    auto* const edit = responder ? editOf(*responder) : nullptr;
    if (edit != nullptr && edit->isVisibleTo(&phone_)) {
        if (!isFocused(*edit)) {
            edit->setFocus(Qt::OtherFocusReason);
        }
    } else if (dynamic_cast<FieldEdit*>(phone_.window()->focusWidget()) != nullptr) {
        phone_.setFocus();
    }
}

FieldEdit* Controls::firstEdit(const platform::Window& window) const {
    for (const auto& view : reachable(window)) {
        const auto field = std::dynamic_pointer_cast<platform::TextField>(view);
        auto* const edit = field && field->canBecomeFirstResponder() ? editOf(*field) : nullptr;
        if (edit != nullptr && edit->isVisibleTo(&phone_)) {
            return edit;
        }
    }
    return nullptr;
}

FieldEdit* Controls::editOf(const platform::TextField& field) const {
    const auto found = controls_.find(&field);
    return found == controls_.end() ? nullptr : dynamic_cast<FieldEdit*>(found->second.widget.get());
}

void Controls::setDown(View& view, bool down) const {
    for (auto around = view.shared_from_this(); around; around = around->superview()) {
        const auto found = controls_.find(around.get());
        auto* const button =
            found == controls_.end() ? nullptr : dynamic_cast<ButtonControl*>(found->second.widget.get());
        if (button != nullptr) {
            button->setDown(down && button->isEnabled());
            return;
        }
    }
}

void Controls::drawFields(QPainter& painter) const {
    for (const auto& [view, control] : controls_) {
        auto* const edit = dynamic_cast<FieldEdit*>(control.widget.get());
        if (edit != nullptr && edit->isVisible() && edit->paintsItself()) {
            edit->render(&painter, edit->pos(), {}, QWidget::DrawChildren);
        }
    }
}

} // namespace kivo::device
