#include "Elements.hpp"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>
#include <QRegion>
#include <utility>

namespace kivo::device {
namespace {

using platform::AccessibilityRole;

constexpr int markReach = 3;

QAccessible::Role roleInQt(AccessibilityRole role) {
    switch (role) {
    case AccessibilityRole::image:
        return QAccessible::Graphic;
    case AccessibilityRole::progress:
        return QAccessible::ProgressBar;
    case AccessibilityRole::alert:
        return QAccessible::AlertMessage;
    case AccessibilityRole::heading:
        return QAccessible::Heading;
    default:
        return QAccessible::StaticText;
    }
}

class ReadableInterface final : public QAccessibleWidget {
public:
    ReadableInterface(ReadableElement& element, QAccessible::Role role)
        : QAccessibleWidget{&element, role} {}

    QAccessible::State state() const override {
        auto state = QAccessibleWidget::state();
        state.busy = role() == QAccessible::ProgressBar;
        state.modal = role() == QAccessible::AlertMessage;
        return state;
    }
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* const element = dynamic_cast<ReadableElement*>(object);
    if (element == nullptr) {
        return nullptr;
    }
    const bool announces = dynamic_cast<Announcer*>(element) != nullptr;
    return new ReadableInterface{*element, announces ? QAccessible::Notification : roleInQt(element->role())};
}

/// Tells Qt the roles of readable elements, once for the process.
void makeElementsAccessible() {
    [[maybe_unused]] static const bool isDone = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
}

} // namespace

ButtonControl::ButtonControl(std::shared_ptr<platform::View> view, std::function<void()> changed, QWidget* parent)
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
    if (isDown()) {
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor{0, 0, 0, 50});
        painter.drawRoundedRect(rect(), cornerRadius_, cornerRadius_);
    }
}

void ButtonControl::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        // For the phone, which knows the direction of its lines.
        event->ignore();
        return;
    default:
        QPushButton::keyPressEvent(event);
    }
}

void ButtonControl::focusInEvent(QFocusEvent* event) {
    QPushButton::focusInEvent(event);
    view_->scrollIntoView();
    changed_();
}

ReadableElement::ReadableElement(AccessibilityRole role, QWidget* parent)
    : QWidget{parent}
    , role_{role} {
    makeElementsAccessible();
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

Announcer::Announcer(QWidget* phone)
    : ReadableElement{AccessibilityRole::status, phone} {
    setObjectName("announcement");
    setGeometry(0, 0, 1, 1);
    hide();
}

void Announcer::announce(const QString& text) {
    hide();
    setAccessibleName(text);
    show();
    QAccessibleEvent event{this, QAccessible::Alert};
    QAccessible::updateAccessibility(&event);
}

FocusRing::FocusRing(QWidget* phone)
    : QFocusFrame{phone} {
    hide();
}

void FocusRing::follow(const QRect& place, double cornerRadius) {
    const auto area = place.adjusted(-markReach, -markReach, markReach, markReach);
    if (area != geometry() || cornerRadius != std::exchange(cornerRadius_, cornerRadius)) {
        setGeometry(area);
        // A caret that blinks inside the ring draws nothing of the ring anew.
        const auto depth = 2 * markReach + 1 + static_cast<int>(cornerRadius * 0.3);
        setMask(QRegion{rect()} - rect().adjusted(depth, depth, -depth, -depth));
        update();
    }
    setVisible(!place.isEmpty());
}

void FocusRing::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    const auto line = QRectF{rect()}.adjusted(markReach, markReach, -markReach, -markReach);
    for (const auto& [color, width] : {std::pair{Qt::black, 2.0 * markReach}, {Qt::white, 2.0}}) {
        painter.setPen(QPen{color, width});
        painter.drawRoundedRect(line, cornerRadius_, cornerRadius_);
    }
}

} // namespace kivo::device
