#include "Strip.hpp"

#include "app/PhoneBody.hpp"
#include "src/Contrast.hpp"

#include <QFont>
#include <QPainter>
#include <algorithm>
#include <stdexcept>

namespace kivo::device::pictures {
namespace {

using app::Model;

constexpr double gap = 26;           // points between two phones
constexpr double captionHeight = 52; // pixels
constexpr int captionSize = 21;
constexpr double leastContrastOfCaptions = 4.5;
constexpr double pixelsOfPoint = 2; // of the screens
constexpr auto shownTime = "9:30";

void requireContrast(const QColor& ink, const QColor& ground) {
    if (contrastOf(ink, ground) < leastContrastOfCaptions) {
        throw std::runtime_error{"a caption or a clock is hard to read: " + ink.name().toStdString() + " on " +
                                 ground.name().toStdString()};
    }
}

const Model& modelOf(const QImage& screen) {
    const auto found = std::ranges::find_if(app::models(), [&](const Model& each) {
        return QSizeF{each.size.width, each.size.height} * pixelsOfPoint == screen.size();
    });
    return found == app::models().end() ? app::usualModel() : *found;
}

/// The display's own picture with its body around, in points of the display.
void drawPhone(QPainter& painter, const Model& model, const QImage& screen, QPointF corner) {
    const QRectF display{corner, QSizeF{model.size.width, model.size.height}};
    app::drawBody(painter, model, display);
    painter.drawImage(display, screen);
    const auto colorAt = [&](double part) {
        return screen.pixelColor(screen.width() / 4, static_cast<int>(part * (screen.height() - 1)));
    };
    requireContrast(app::inkOn(colorAt(0.01)), colorAt(0.01));
    app::drawOverDisplay(painter, model, /*isLandscape=*/false, display, shownTime, app::inkOn(colorAt(0.01)),
                         app::inkOn(colorAt(0.99)));
}

void prepare(QPainter& painter, double scale, const Page& page) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
    painter.setLayoutDirection(page.direction);
    painter.scale(scale, scale);
}

/// The screen with as many pixels as the phone has in the picture: a painter would scale less smoothly.
QImage scaledTo(const QImage& screen, double scale, const Model& model) {
    const auto wanted = QSizeF{model.size.width, model.size.height} * scale;
    return screen.scaled(wanted.toSize(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

} // namespace

QColor pageColor(bool isDark) {
    return isDark ? QColor{13, 17, 23} : QColor{Qt::white};
}

QImage strip(const std::vector<Step>& steps, int width, const Page& page) {
    const auto& model = modelOf(steps.front().screen);
    const auto margin = app::marginAround(model);
    const auto each = model.size.width + 2 * margin;
    const auto count = static_cast<double>(steps.size());
    const auto across = count * each + (count - 1) * gap;
    const auto scale = width / across;
    const auto below = model.size.height + 2 * margin;
    QImage picture{width, qRound(below * scale + captionHeight), QImage::Format_ARGB32_Premultiplied};
    picture.fill(Qt::transparent);
    QPainter painter{&picture};
    prepare(painter, scale, page);
    QFont font{"Inter"};
    font.setPixelSize(qRound(captionSize / scale));
    font.setWeight(QFont::Medium);
    painter.setFont(font);
    painter.setPen(page.isDark ? QColor{201, 209, 217} : QColor{48, 54, 61});
    requireContrast(painter.pen().color(), pageColor(page.isDark));
    double x = 0;
    for (const auto& [caption, screen] : steps) {
        drawPhone(painter, model, scaledTo(screen, scale, model), {x + margin, margin});
        painter.drawText(QRectF{x, below, each, captionHeight / scale}, Qt::AlignCenter, caption);
        x += each + gap;
    }
    return picture;
}

QImage phone(const QImage& screen, int width, const Page& page) {
    const auto& model = app::usualModel();
    const auto margin = app::marginAround(model);
    const auto scale = width / (model.size.width + 2 * margin);
    QImage picture{width, qRound((model.size.height + 2 * margin) * scale), QImage::Format_RGB32};
    picture.fill(pageColor(page.isDark));
    QPainter painter{&picture};
    prepare(painter, scale, page);
    drawPhone(painter, model, scaledTo(screen, scale, model), {margin, margin});
    return picture;
}

} // namespace kivo::device::pictures
