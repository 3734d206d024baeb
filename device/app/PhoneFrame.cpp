#include "PhoneFrame.hpp"

#include "PhoneBody.hpp"
#include "ToolLook.hpp"

#include <QEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTime>
#include <algorithm>
#include <chrono>
#include <memory>

namespace kivo::device::app {
namespace {

using namespace std::chrono_literals;

constexpr QSize leastRoom{240, 320};

} // namespace

/// What lies over the display: round corners, camera, status bar, and the bar at the lower edge.
class PhoneFrame::Glass final : public QWidget {
public:
    explicit Glass(PhoneFrame& frame)
        : QWidget{&frame}
        , frame_{frame} {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

    QColor ink = Qt::black;
    QColor inkBelow = Qt::black;

    /// Only these parts are drawn; a caret that blinks between them draws nothing anew here.
    void cover(const QRegion& parts) { setMask(parts); }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        const auto zoom = frame_.phone_->zoom();
        painter.translate(1, 1);
        painter.scale(zoom, zoom);
        const auto size = frame_.model_.sizeWhen(frame_.isLandscape_);
        painter.setLayoutDirection(frame_.readingDirection());
        drawOverDisplay(painter, frame_.model_, frame_.isLandscape_, {0, 0, size.width, size.height},
                        frame_.timeOfDay(), ink, inkBelow);
    }

private:
    PhoneFrame& frame_;
};

PhoneFrame::PhoneFrame(device::PhoneView* phone, QWidget* parent)
    : QWidget{parent}
    , phone_{phone} {
    setObjectName("desk");
    phone->setParent(this);
    phone->installEventFilter(this);
    glass_ = std::make_unique<Glass>(*this).release();
    setMinimumSize(leastRoom);
    inkIsDue_.setSingleShot(true);
    connect(&inkIsDue_, &QTimer::timeout, this, &PhoneFrame::takeInk);
    connect(&minute_, &QTimer::timeout, glass_, [this] { glass_->update(); });
    minute_.start(10s);
    setModel(model_, isLandscape_);
}

void PhoneFrame::setModel(const Model& model, bool isLandscape) {
    model_ = model;
    isLandscape_ = isLandscape;
    const auto& window = phone_->shownWindow();
    window->setSafeArea(model.safeAreaWhen(isLandscape));
    window->setSize(model.sizeWhen(isLandscape));
    place();
}

void PhoneFrame::setFitted(bool isFitted) {
    isFitted_ = isFitted;
    place();
}

void PhoneFrame::setTime(const QString& time) {
    time_ = time;
    glass_->update();
}

QString PhoneFrame::timeOfDay() const {
    return time_.isEmpty() ? QTime::currentTime().toString("H:mm") : time_;
}

Qt::LayoutDirection PhoneFrame::readingDirection() const {
    const bool isFromTheRight = phone_->shownWindow()->layoutDirection() == platform::LayoutDirection::rightToLeft;
    return isFromTheRight ? Qt::RightToLeft : Qt::LeftToRight;
}

QImage PhoneFrame::picture(double scale) {
    auto picture = phone_->picture(scale);
    QPainter painter{&picture};
    painter.setRenderHint(QPainter::Antialiasing);
    auto bare = model_;
    bare.cornerRadius = 0;
    bare.hasCameraInDisplay = false;
    const auto size = model_.sizeWhen(isLandscape_);
    painter.setLayoutDirection(readingDirection());
    drawOverDisplay(painter, bare, isLandscape_, {0, 0, size.width, size.height}, timeOfDay(), glass_->ink,
                    glass_->inkBelow);
    return picture;
}

void PhoneFrame::place() {
    const auto size = model_.sizeWhen(isLandscape_);
    const auto margin = 2 * marginAround(model_);
    const QSizeF whole{size.width + margin, size.height + margin};
    setMinimumSize(isFitted_ ? leastRoom : whole.toSize());
    const auto fitting = std::min(width() / whole.width(), height() / whole.height());
    phone_->setZoom(isFitted_ ? std::min(fitting, 1.0) : 1.0);
    const auto shown = phone_->sizeHint();
    phone_->move((width() - shown.width()) / 2, (height() - shown.height()) / 2);
    glass_->setGeometry(phone_->geometry().adjusted(-1, -1, 1, 1));
    const auto zoom = phone_->zoom();
    const auto& safe = model_.safeAreaWhen(isLandscape_);
    const auto around = glass_->rect();
    const auto strip = [&](double points) {
        return static_cast<int>(std::max(points, model_.cornerRadius) * zoom) + 2;
    };
    QRegion parts{0, 0, around.width(), strip(safe.top)};
    parts += QRect{0, around.height() - strip(safe.bottom), around.width(), strip(safe.bottom)};
    if (isLandscape_ && model_.hasCameraInDisplay) {
        parts += QRect{0, 0, strip(safe.left), around.height()};
    }
    parts += QRect{0, 0, 1, around.height()};
    parts += QRect{around.width() - 1, 0, 1, around.height()};
    glass_->cover(parts);
    glass_->raise();
    inkIsDue_.start();
    update();
}

QRectF PhoneFrame::display() const {
    const auto zoom = phone_->zoom();
    const auto size = model_.sizeWhen(isLandscape_);
    return {phone_->x() / zoom, phone_->y() / zoom, size.width, size.height};
}

bool PhoneFrame::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint && !isTakingInk_) {
        const auto& painted = static_cast<QPaintEvent*>(event)->region();
        const auto depth = phone_->height() / 20;
        if (painted.intersects(QRect{0, 0, phone_->width(), depth}) ||
            painted.intersects(QRect{0, phone_->height() - depth, phone_->width(), depth})) {
            inkIsDue_.start();
        }
    } else if (event->type() == QEvent::Resize) {
        place();
    }
    return QWidget::eventFilter(watched, event);
}

void PhoneFrame::takeInk() {
    const auto inkAt = [&](int y) {
        return inkOn(phone_->grab({phone_->width() / 4, y, 1, 1}).toImage().pixelColor(0, 0));
    };
    isTakingInk_ = true;
    const auto former = std::pair{glass_->ink, glass_->inkBelow};
    glass_->ink = inkAt(2);
    glass_->inkBelow = inkAt(phone_->height() - 3);
    isTakingInk_ = false;
    if (former != std::pair{glass_->ink, glass_->inkBelow}) {
        glass_->update();
    }
}

void PhoneFrame::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), toolColors(isToolDark()).desk);
    painter.scale(phone_->zoom(), phone_->zoom());
    drawBody(painter, model_, display());
}

void PhoneFrame::resizeEvent(QResizeEvent* /*event*/) {
    place();
}

} // namespace kivo::device::app
