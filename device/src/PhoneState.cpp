#include "PhoneState.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/PreviewView.hpp>

#include <QGuiApplication>
#include <chrono>
#include <cmath>
#include <utility>

namespace kivo::device {
namespace {

constexpr int turnInterval = 33;   // milliseconds, of what turns for a long time
constexpr int motionInterval = 16; // milliseconds, of what moves for a moment
constexpr double turnTime = 1000;  // milliseconds

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

MotionTime steadyTime() {
    return std::chrono::duration_cast<MotionTime>(std::chrono::steady_clock::now().time_since_epoch());
}

} // namespace

PhoneView::State::State(PhoneView& phone, std::shared_ptr<platform::Window> shown)
    : window{std::move(shown)}
    , controls{phone, [this] { synchronize(); }}
    , isAnimated{QGuiApplication::platformName() != "offscreen"}
    , clock{steadyTime}
    , phone_{phone} {
    synchronizing_.setSingleShot(true);
    QObject::connect(&synchronizing_, &QTimer::timeout, &phone, [this] { synchronize(); });
}

void PhoneView::State::viewDidChange(platform::View& view) {
    repaints_.note(view);
    schedule();
}

void PhoneView::State::screenDidChange() {
    isOtherScreen_ = true;
    schedule();
}

void PhoneView::State::synchronize() {
    if (std::exchange(isSynchronizing_, true)) {
        return;
    }
    isScheduled_ = false;
    window->layoutIfNeeded();
    if (std::exchange(isOtherScreen_, false)) {
        beginTransition();
    }
    if (transition_.isRunning() && (!isAnimated || transition_.isOver(clock()))) {
        transition_ = {};
        isWhollyNew_ = true;
    }
    motion_.follow(*window, clock(), isAnimated && phone_.isVisible(), transition_.isRunning());
    controls.synchronize(*window, !transition_.isRunning() && !motion_.isShaking());
    redraw();
    updateMotion();
    turn();
    isSynchronizing_ = false;
}

void PhoneView::State::synchronizeSilentChanges() {
    const auto size = frameSize();
    window->layoutIfNeeded();
    if (isScheduled_ || size != frame_.size()) {
        synchronize();
    }
}

void PhoneView::State::paint(QPainter& painter, const QRect& part) {
    if (frame_.isNull()) {
        return;
    }
    if (transition_.isRunning()) {
        transition_.draw(painter, frame_, phone_.size(), clock());
        return;
    }
    painter.setClipRect(part);
    painter.drawPixmap(0, 0, frame_);
    if (motion_.isRunning()) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(zoom_, zoom_);
        motion_.draw(painter, frame_, zoom_ * frame_.devicePixelRatioF(), clock());
    }
}

QImage PhoneView::State::picture(double scale) {
    synchronize();
    auto picture = pictureOf(*window, scale, {.turn = turn_});
    QPainter painter{&picture};
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (transition_.isRunning()) {
        // Both screens are in motion, so the phone's own pixels are sharp enough.
        painter.scale(1 / zoom_, 1 / zoom_);
        transition_.draw(painter, frame_, phone_.size(), clock());
    } else if (motion_.isRunning()) {
        const auto still = QPixmap::fromImage(picture);
        motion_.draw(painter, still, scale, clock());
    }
    return picture;
}

void PhoneView::State::tick() {
    turn_ = std::fmod(static_cast<double>(clock().count()), turnTime) / turnTime;
    if (transition_.isRunning() || motion_.isRunning()) {
        synchronize();
    }
    eachMoving(*window, [this](platform::View& view) { repaints_.note(view); });
    redraw();
}

bool PhoneView::State::leave() {
    if (const auto alert = std::dynamic_pointer_cast<platform::AlertController>(window->visibleViewController())) {
        alert->cancel();
        return true;
    }
    if (const auto edited = platform::Keyboard::firstResponder(); edited && edited->isDescendantOf(*window)) {
        return window->endEditing();
    }
    const auto back = controls.focusable("backButton");
    return back && back->touch();
}

void PhoneView::State::setZoom(double zoom) {
    zoom_ = zoom;
    controls.setZoom(zoom);
    finger.setZoom(zoom);
    isWhollyNew_ = true;
    synchronize();
}

QSize PhoneView::State::sizeInPixels() const {
    return (QSizeF{window->frame().size.width, window->frame().size.height} * zoom_).toSize();
}

void PhoneView::State::schedule() {
    if (!std::exchange(isScheduled_, true)) {
        synchronizing_.start();
    }
}

QRect PhoneView::State::inView(const QRectF& points) const {
    return QRectF{points.topLeft() * zoom_, points.size() * zoom_}.toAlignedRect();
}

QSize PhoneView::State::frameSize() const {
    return (QSizeF{sizeInPixels()} * phone_.devicePixelRatioF()).toSize();
}

void PhoneView::State::beginTransition() {
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
    const bool isMirrored = window->layoutDirection() == platform::LayoutDirection::rightToLeft;
    transition_ = Transition{kind, before, clock(), isMirrored};
}

void PhoneView::State::redraw() {
    QRegion region;
    for (const auto& each : repaints_.take(*window)) {
        region += zoom_ == 1 ? each : inView(each);
    }
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
    painter.fillRect(phone_.rect(), groundOf(*window));
    painter.scale(zoom_, zoom_);
    drawTree(painter, *window, {.turn = turn_, .isDrawnElsewhere = [this](const platform::TextField& field) {
                                    const auto* edit = controls.editOf(field);
                                    return edit != nullptr && edit->paintsItself();
                                }});
    phone_.update(region);
}

void PhoneView::State::updateMotion() {
    if (transition_.isRunning()) {
        phone_.update();
    }
    for (const auto& area : motion_.areas(clock())) {
        phone_.update(inView(area));
    }
}

void PhoneView::State::turn() {
    int interval = 0;
    eachMoving(*window, [&](platform::View&) { interval = turnInterval; });
    if (transition_.isRunning() || motion_.isRunning()) {
        interval = motionInterval;
    }
    if (interval != timerInterval_) {
        if (timer_ != 0) {
            phone_.killTimer(std::exchange(timer_, 0));
        }
        timer_ = interval == 0 ? 0 : phone_.startTimer(interval);
        timerInterval_ = interval;
    }
}

} // namespace kivo::device
