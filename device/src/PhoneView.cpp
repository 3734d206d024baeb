#include "PhoneState.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/AlertController.hpp>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace kivo::device {
namespace {

constexpr double smallestZoom = 0.1;
constexpr double largestZoom = 4;
constexpr double wheelNotch = 120; // the usual step of a wheel, in eighths of a degree
constexpr double lineHeight = 20;  // of the lines by which a wheel scrolls, as in Qt's own scroll areas

/// Whether the key puts a text into a field.
bool isTyping(const QKeyEvent& event) {
    const bool isShortcut = (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    return event.matches(QKeySequence::Paste) ||
           (!isShortcut && !event.text().isEmpty() && event.text().front().isPrint());
}

} // namespace

PhoneView::PhoneView(std::shared_ptr<platform::Window> window, QWidget* parent)
    : QWidget{parent}
    , state_{std::make_shared<State>(*this, std::move(window))} {
    setAccessibleName("Phone");
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    state_->window->setObserver(state_);
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this,
            [this] { state_->synchronizeSilentChanges(); });
    synchronize();
}

PhoneView::~PhoneView() {
    state_->window->setObserver({});
}

const std::shared_ptr<platform::Window>& PhoneView::shownWindow() const {
    return state_->window;
}

void PhoneView::setAnimated(bool animated) {
    state_->isAnimated = animated;
    synchronize();
}

void PhoneView::setClock(std::function<std::chrono::milliseconds()> clock) {
    state_->clock = std::move(clock);
}

void PhoneView::setZoom(double zoom) {
    state_->setZoom(std::clamp(zoom, smallestZoom, largestZoom));
}

double PhoneView::zoom() const {
    return state_->zoom();
}

QImage PhoneView::picture(double scale) {
    return state_->picture(scale);
}

void PhoneView::synchronize() {
    state_->synchronize();
}

QSize PhoneView::sizeHint() const {
    return state_->sizeInPixels();
}

void PhoneView::paintEvent(QPaintEvent* event) {
    QPainter painter{this};
    state_->paint(painter, event->rect());
}

void PhoneView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        state_->finger.press(*state_->window, *event, [this] { synchronize(); });
    }
}

void PhoneView::mouseMoveEvent(QMouseEvent* event) {
    state_->finger.move(*event);
}

void PhoneView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        state_->finger.release(*state_->window, *event);
        synchronize();
    }
}

void PhoneView::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

void PhoneView::wheelEvent(QWheelEvent* event) {
    // A touch pad gives a distance, a wheel gives an angle.
    const auto distance = event->pixelDelta().isNull()
                              ? event->angleDelta().y() / wheelNotch * QApplication::wheelScrollLines() * lineHeight
                              : event->pixelDelta().y();
    // What cannot be scrolled further leaves the wheel to the scroll areas around the phone.
    event->setAccepted(state_->finger.wheel(*state_->window, event->position(), distance));
}

void PhoneView::keyPressEvent(QKeyEvent* event) {
    const auto alert = std::dynamic_pointer_cast<platform::AlertController>(state_->window->visibleViewController());
    if (alert && event->key() == Qt::Key_Escape) {
        alert->cancel();
        synchronize();
    } else if (auto* const edit = isTyping(*event) ? state_->controls.firstEdit(*state_->window) : nullptr;
               edit != nullptr && !edit->hasFocus()) {
        edit->setFocus(Qt::OtherFocusReason);
        QCoreApplication::sendEvent(edit, event);
    } else {
        QWidget::keyPressEvent(event);
    }
}

void PhoneView::timerEvent(QTimerEvent* /*event*/) {
    state_->tick();
}

} // namespace kivo::device
