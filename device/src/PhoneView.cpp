#include "Controls.hpp"
#include "Drawing.hpp"
#include "Finger.hpp"
#include "Transition.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/PreviewView.hpp>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <QPaintEvent>
#include <QTimer>
#include <QVariantAnimation>
#include <cmath>
#include <utility>

namespace kivo::device {
namespace {

constexpr int turnInterval = 33; // milliseconds
constexpr double turnStep = 1 / 30.0;
constexpr int transitionTime = 280; // milliseconds
constexpr double wheelNotch = 120;  // the usual step of a wheel, in eighths of a degree
constexpr double lineHeight = 20;   // of the lines by which a wheel scrolls, as in Qt's own scroll areas

/// Calls `visit` for every view that changes its look without a notice: turning activity indicators and camera
/// pictures.
void eachMoving(platform::View& view, const std::function<void(platform::View&)>& visit) {
    if (view.isHidden() || view.alpha() <= 0) {
        return;
    }
    const auto* wheel = dynamic_cast<platform::ActivityIndicatorView*>(&view);
    const auto* camera = dynamic_cast<platform::PreviewView*>(&view);
    if ((wheel && wheel->isAnimating()) || (camera && camera->previewSession())) {
        visit(view);
    }
    for (const auto& subview : view.subviews()) {
        eachMoving(*subview, visit);
    }
}

/// Whether the key puts a text into a field.
bool isTyping(const QKeyEvent& event) {
    const bool isShortcut = (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    return event.matches(QKeySequence::Paste) ||
           (!isShortcut && !event.text().isEmpty() && event.text().front().isPrint());
}

} // namespace

class PhoneView::State final : public platform::WindowObserver {
public:
    State(PhoneView& phone, std::shared_ptr<platform::Window> shown)
        : window{std::move(shown)}
        , controls{phone, [this] { synchronize(); }}
        , phone_{phone} {
        synchronizing_.setSingleShot(true);
        QObject::connect(&synchronizing_, &QTimer::timeout, &phone, [this] { synchronize(); });
        animation_.setDuration(transitionTime);
        animation_.setStartValue(0.0);
        animation_.setEndValue(1.0);
        animation_.setEasingCurve(QEasingCurve::OutCubic);
        QObject::connect(&animation_, &QVariantAnimation::valueChanged, &phone, [this] { phone_.update(); });
        QObject::connect(&animation_, &QVariantAnimation::finished, &phone, [this] { endTransition(); });
    }

    void viewDidChange(platform::View& view) override {
        repaints_.note(view);
        schedule();
    }

    void screenDidChange() override {
        isOtherScreen_ = true;
        schedule();
    }

    void synchronize() {
        if (std::exchange(isSynchronizing_, true)) {
            return;
        }
        isScheduled_ = false;
        window->layoutIfNeeded();
        if (std::exchange(isOtherScreen_, false)) {
            beginTransition();
        }
        controls.synchronize(*window, !transition_.isRunning());
        redraw();
        turn();
        isSynchronizing_ = false;
    }

    /// Called for every block of events, and therefore quick when nothing has changed.
    void synchronizeSilentChanges() {
        const auto size = frameSize();
        window->layoutIfNeeded();
        if (isScheduled_ || size != frame_.size()) {
            synchronize();
        }
    }

    void paint(QPainter& painter, const QRect& part) {
        if (frame_.isNull()) {
            return;
        }
        if (transition_.isRunning()) {
            transition_.draw(painter, frame_, phone_.size(), animation_.currentValue().toDouble());
        } else {
            painter.setClipRect(part);
            painter.drawPixmap(0, 0, frame_);
        }
    }

    void tick() {
        turn_ = std::fmod(turn_ + turnStep, 1.0);
        eachMoving(*window, [this](platform::View& view) { repaints_.note(view); });
        redraw();
    }

    std::shared_ptr<platform::Window> window;
    Controls controls;
    Finger finger{controls};
    bool isAnimated = QGuiApplication::platformName() != "offscreen";

private:
    void schedule() {
        if (!std::exchange(isScheduled_, true)) {
            synchronizing_.start();
        }
    }

    QSize frameSize() const {
        return (QSizeF{window->frame().size.width, window->frame().size.height} * phone_.devicePixelRatioF()).toSize();
    }

    void beginTransition() {
        const auto kind = Transition::kindOf(depth_, depthOf(*window));
        depth_ = depthOf(*window);
        if (!isAnimated || !phone_.isVisible() || frame_.isNull() || kind == Transition::Kind::none) {
            return;
        }
        auto before = frame_;
        {
            QPainter painter{&before};
            controls.drawFields(painter);
        }
        transition_ = Transition{kind, before};
        animation_.stop();
        animation_.start();
    }

    void endTransition() {
        transition_ = {};
        isWhollyNew_ = true;
        synchronize();
    }

    /// Draws the changed parts of the picture.
    void redraw() {
        auto region = repaints_.take(*window);
        if (frame_.size() != frameSize()) {
            frame_ = QPixmap{frameSize()};
            frame_.setDevicePixelRatio(phone_.devicePixelRatioF());
            phone_.setFixedSize(phone_.sizeHint());
            isWhollyNew_ = true;
        }
        if (std::exchange(isWhollyNew_, false)) {
            region = phone_.rect();
        }
        region &= phone_.rect();
        if (region.isEmpty()) {
            return;
        }
        QPainter painter{&frame_};
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.setClipRegion(region);
        painter.fillRect(phone_.rect(), Qt::white);
        drawTree(painter, *window, {.turn = turn_, .isDrawnElsewhere = [this](const platform::TextField& field) {
                                        const auto* edit = controls.editOf(field);
                                        return edit != nullptr && edit->paintsItself();
                                    }});
        phone_.update(region);
    }

    /// Runs the timer while a view moves.
    void turn() {
        bool isMoving = false;
        eachMoving(*window, [&](platform::View&) { isMoving = true; });
        if (isMoving && timer_ == 0) {
            timer_ = phone_.startTimer(turnInterval);
        } else if (!isMoving && timer_ != 0) {
            phone_.killTimer(std::exchange(timer_, 0));
        }
    }

    PhoneView& phone_;
    int timer_ = 0;
    Repaints repaints_;
    QPixmap frame_;
    Transition transition_;
    /// Fires when the pending events have been handled.
    QTimer synchronizing_;
    QVariantAnimation animation_;
    Depth depth_;
    double turn_ = 0;
    bool isScheduled_ = false;
    bool isSynchronizing_ = false;
    bool isOtherScreen_ = false;
    bool isWhollyNew_ = true;
};

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
}

void PhoneView::synchronize() {
    state_->synchronize();
}

QSize PhoneView::sizeHint() const {
    return QSizeF{state_->window->frame().size.width, state_->window->frame().size.height}.toSize();
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
    event->setAccepted(Finger::wheel(*state_->window, event->position(), distance));
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
