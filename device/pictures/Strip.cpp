#include "Strip.hpp"

#include "app/PhoneBody.hpp"

#include <QFont>
#include <QPainter>

namespace kivo::device::pictures {
namespace {

using app::Model;

constexpr double gap = 26; // points between two phones
constexpr double captionHeight = 64;
constexpr int captionSize = 26;
constexpr auto shownTime = "9:30";

/// The display's own picture with its body around, in points of the display.
void drawPhone(QPainter& painter, const Model& model, const QImage& screen, QPointF corner) {
    const QRectF display{corner, QSizeF{model.size.width, model.size.height}};
    app::drawBody(painter, model, display);
    painter.drawImage(display, screen);
    const auto colorAt = [&](double part) {
        return screen.pixelColor(screen.width() / 4, static_cast<int>(part * (screen.height() - 1)));
    };
    app::drawOverDisplay(painter, model, /*isLandscape=*/false, display, shownTime, app::inkOn(colorAt(0.01)),
                         app::inkOn(colorAt(0.99)));
}

void prepare(QPainter& painter, double scale) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform | QPainter::TextAntialiasing);
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

QImage strip(const std::vector<Step>& steps, int width, bool isDark) {
    const auto& model = app::usualModel();
    const auto margin = app::marginAround(model);
    const auto each = model.size.width + 2 * margin;
    const auto count = static_cast<double>(steps.size());
    const auto across = count * each + (count - 1) * gap;
    const auto scale = width / across;
    QImage picture{width, qRound((model.size.height + 2 * margin + captionHeight) * scale),
                   QImage::Format_ARGB32_Premultiplied};
    picture.fill(Qt::transparent);
    QPainter painter{&picture};
    prepare(painter, scale);
    QFont font{"Inter"};
    font.setPixelSize(captionSize);
    font.setWeight(QFont::Medium);
    painter.setFont(font);
    painter.setPen(isDark ? QColor{201, 209, 217} : QColor{48, 54, 61});
    double x = 0;
    for (const auto& [caption, screen] : steps) {
        drawPhone(painter, model, scaledTo(screen, scale, model), {x + margin, margin});
        painter.drawText(QRectF{x, model.size.height + 2 * margin, each, captionHeight}, Qt::AlignCenter, caption);
        x += each + gap;
    }
    return picture;
}

QImage phone(const QImage& screen, int width, bool isDark) {
    const auto& model = app::usualModel();
    const auto margin = app::marginAround(model);
    const auto scale = width / (model.size.width + 2 * margin);
    QImage picture{width, qRound((model.size.height + 2 * margin) * scale), QImage::Format_RGB32};
    picture.fill(pageColor(isDark));
    QPainter painter{&picture};
    prepare(painter, scale);
    drawPhone(painter, model, scaledTo(screen, scale, model), {margin, margin});
    return picture;
}

} // namespace kivo::device::pictures
