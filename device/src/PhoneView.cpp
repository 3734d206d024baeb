#include "PhoneState.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/LayoutDirection.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <ranges>
#include <utility>

namespace kivo::device {
namespace {

constexpr double smallestZoom = 0.1;
constexpr double largestZoom = 4;
constexpr double wheelNotch = 120; // the usual step of a wheel, in eighths of a degree
constexpr double lineHeight = 20;  // of the lines by which a wheel scrolls, as in Qt's own scroll areas

/// The topmost scroll view on the display that has more content than room; null without such a view.
std::shared_ptr<platform::ScrollView> scrollIn(const std::shared_ptr<platform::View>& view) {
    if (!view->isVisible()) {
        return nullptr;
    }
    for (const auto& subview : view->subviews() | std::views::reverse) {
        if (auto found = scrollIn(subview)) {
            return found;
        }
    }
    auto scroll = std::dynamic_pointer_cast<platform::ScrollView>(view);
    return scroll && scroll->contentSize().height > scroll->frame().size.height ? scroll : nullptr;
}

/// Whether the key scrolled.
bool scrolls(const platform::Window& window, int key) {
    std::shared_ptr<platform::ScrollView> scroll;
    for (const auto& view : window.reachableViews()) {
        scroll = scroll ? scroll : scrollIn(view);
    }
    if (!scroll) {
        return false;
    }
    const auto page = scroll->frame().size.height - lineHeight;
    const std::map<int, double> distances{{Qt::Key_Up, -lineHeight},
                                          {Qt::Key_Down, lineHeight},
                                          {Qt::Key_PageUp, -page},
                                          {Qt::Key_PageDown, page},
                                          {Qt::Key_Home, -scroll->contentSize().height},
                                          {Qt::Key_End, scroll->contentSize().height}};
    const auto found = distances.find(key);
    if (found == distances.end()) {
        return false;
    }
    scroll->setContentOffset(scroll->contentOffset() + found->second);
    return true;
}

/// Whether an arrow key leads to the next control, or to the former one; absent for another key.
std::optional<bool> leadsOn(int key, platform::LayoutDirection direction) {
    const bool isMirrored = direction == platform::LayoutDirection::rightToLeft;
    switch (key) {
    case Qt::Key_Down:
        return true;
    case Qt::Key_Up:
        return false;
    case Qt::Key_Right:
        return !isMirrored;
    case Qt::Key_Left:
        return isMirrored;
    default:
        return std::nullopt;
    }
}

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
    // The controls go with the state, and Qt may then ask for the next focus.
    const auto last = std::exchange(state_, nullptr);
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
    const auto onward = leadsOn(event->key(), state_->window->layoutDirection());
    const bool isOnControl = QApplication::focusWidget() != this;
    const bool isTaken = (event->key() == Qt::Key_Escape && state_->leave()) ||
                         (onward && isOnControl && state_->controls.moveFocus(*onward)) ||
                         scrolls(*state_->window, event->key());
    if (isTaken) {
        synchronize();
        return;
    }
    auto* const edit = isTyping(*event) ? state_->controls.firstEdit() : nullptr;
    if (edit != nullptr && !edit->hasFocus()) {
        edit->setFocus(Qt::OtherFocusReason);
        QCoreApplication::sendEvent(edit, event);
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool PhoneView::focusNextPrevChild(bool next) {
    const bool staysHere = state_ && state_->controls.keepsFocus();
    return staysHere ? state_->controls.moveFocus(next) : QWidget::focusNextPrevChild(next);
}

void PhoneView::timerEvent(QTimerEvent* /*event*/) {
    state_->tick();
}

} // namespace kivo::device
