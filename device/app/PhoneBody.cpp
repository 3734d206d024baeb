#include "PhoneBody.hpp"

#include <QFont>
#include <QFontDatabase>
#include <QLinearGradient>
#include <QPainterPath>
#include <algorithm>

namespace kivo::device::app {
namespace {

constexpr double metalEdge = 2;     // of metal around the glass
constexpr double buttonDepth = 2.5; // of the buttons at the sides
constexpr double shadowReach = 14;
constexpr double cameraRadius = 6.5;
constexpr double barHeight = 5; // of the bar at the lower edge

const QColor glass{8, 9, 11};

QPainterPath rounded(const QRectF& rect, double radius) {
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QRectF grown(const QRectF& rect, double by) {
    return rect.adjusted(-by, -by, by, by);
}

void drawShadowOfBody(QPainter& painter, const QRectF& body, double radius) {
    constexpr int steps = 14;
    constexpr double density = 0.30;
    for (int i = 0; i < steps; ++i) {
        const auto reach = shadowReach * (1 - static_cast<double>(i) / steps);
        painter.fillPath(
            rounded(grown(body.translated(0, shadowReach * 0.35), reach - shadowReach * 0.35), radius + reach),
            QColor::fromRgbF(0, 0, 0, static_cast<float>(density / steps)));
    }
}

void drawButtons(QPainter& painter, const Model& model, const QRectF& body, bool isLandscape) {
    // The places along the longer side, as parts of its length; upright, the first button is at the right.
    struct Key {
        bool isAtRight;
        double begin;
        double length;
    };

    static constexpr Key keys[]{{true, 0.26, 0.11}, {false, 0.20, 0.065}, {false, 0.285, 0.065}};
    const auto length = isLandscape ? body.width() : body.height();
    for (const auto& [isAtRight, begin, part] : keys) {
        if (!isAtRight && model.size.width > 600) {
            continue; // a tablet has its keys at the upper edge, out of sight
        }
        const auto from = length * begin;
        const auto span = length * part;
        const auto key = isLandscape
                             ? QRectF{body.left() + from, isAtRight ? body.top() - buttonDepth : body.bottom() - 2,
                                      span, buttonDepth + 2}
                             : QRectF{isAtRight ? body.right() - 2 : body.left() - buttonDepth, body.top() + from,
                                      buttonDepth + 2, span};
        painter.fillPath(rounded(key, 1.5), QColor{70, 74, 82});
    }
}

QFont fontOfBar(double pixels) {
    QFont font{"Inter"};
    font.setPixelSize(static_cast<int>(pixels));
    font.setWeight(QFont::DemiBold);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

/// The battery, whose right edge is at `right`, and the strength of the signal at its left.
void drawSymbols(QPainter& painter, double right, double middle, double height, const QColor& ink) {
    const QRectF battery{right - height * 2, middle - height / 2, height * 2, height};
    auto faint = ink;
    faint.setAlphaF(0.45F);
    painter.setPen(QPen{faint, 1});
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(battery.adjusted(0.5, 0.5, -0.5, -0.5), height * 0.3, height * 0.3);
    painter.fillPath(rounded(battery.adjusted(2, 2, -height * 0.5, -2), height * 0.14), ink);
    painter.fillRect(QRectF{right + 1, middle - height * 0.17, 1.4, height * 0.34}, faint);
    constexpr int bars = 4;
    const auto width = height * 0.26;
    for (int i = 0; i < bars; ++i) {
        const auto tall = height * (0.4 + 0.2 * i);
        const auto x = battery.left() - height * 0.6 - (bars - i) * width * 1.6;
        painter.fillPath(rounded({x, middle + height / 2 - tall, width, tall}, 0.8), ink);
    }
}

void drawStatusBar(QPainter& painter, const Model& model, const QRectF& display, double height, const QString& time,
                   const QColor& ink) {
    const bool isLow = height < 30;
    const auto middle = display.top() + (isLow ? height / 2 : height * 0.54);
    const auto inset = isLow ? 12.0 : model.cornerRadius * 0.75;
    painter.setFont(fontOfBar(isLow ? 12 : 15));
    painter.setPen(ink);
    const auto room = display.adjusted(inset, middle - 15 - display.top(), -inset, middle + 15 - display.bottom());
    const bool isMirrored = painter.layoutDirection() == Qt::RightToLeft;
    // The leading edge: with the painter's direction, Qt mirrors the alignment.
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft, time);
    if (isMirrored) {
        painter.translate(display.left() + display.right(), 0);
        painter.scale(-1, 1);
    }
    drawSymbols(painter, display.right() - inset - 3, middle, isLow ? 9 : 11.5, ink);
}

} // namespace

double marginAround(const Model& model) {
    return model.bezel + metalEdge + shadowReach;
}

void drawBody(QPainter& painter, const Model& model, const QRectF& display) {
    const auto body = grown(display, model.bezel + metalEdge);
    const auto radius = model.cornerRadius + model.bezel + metalEdge;
    const bool isLandscape = display.width() > display.height();
    painter.save();
    painter.setPen(Qt::NoPen);
    drawShadowOfBody(painter, body, radius);
    drawButtons(painter, model, body, isLandscape);
    QLinearGradient metal{body.topLeft(), body.bottomRight()};
    metal.setColorAt(0, QColor{132, 137, 147});
    metal.setColorAt(0.35, QColor{74, 78, 86});
    metal.setColorAt(0.7, QColor{96, 100, 109});
    metal.setColorAt(1, QColor{52, 55, 61});
    painter.fillPath(rounded(body, radius), metal);
    painter.fillPath(rounded(grown(body, -metalEdge), radius - metalEdge), glass);
    painter.restore();
}

void drawOverDisplay(QPainter& painter, const Model& model, bool isLandscape, const QRectF& display,
                     const QString& time, const QColor& ink, const QColor& inkBelow) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    // A little beyond the display, so that no line of its picture shines through at the edge.
    painter.fillPath(rounded(grown(display, 0.5), 0).subtracted(rounded(display, model.cornerRadius)), glass);
    const auto& safe = model.safeAreaWhen(isLandscape);
    if (model.hasCameraInDisplay) {
        const auto middle = isLandscape ? QPointF{display.left() + safe.left * 0.54, display.center().y()}
                                        : QPointF{display.center().x(), display.top() + safe.top * 0.54};
        painter.setBrush(glass);
        painter.drawEllipse(middle, cameraRadius, cameraRadius);
        painter.setBrush(QColor{26, 34, 54});
        painter.drawEllipse(middle, cameraRadius * 0.45, cameraRadius * 0.45);
    }
    if (safe.top > 0) {
        painter.save();
        drawStatusBar(painter, model, display, safe.top, time, ink);
        painter.restore();
    }
    if (safe.bottom > 0) {
        const auto width = std::min(display.width() * 0.36, 220.0);
        auto bar = inkBelow;
        bar.setAlphaF(0.85F);
        painter.fillPath(rounded({display.center().x() - width / 2, display.bottom() - 8 - barHeight, width, barHeight},
                                 barHeight / 2),
                         bar);
    }
    painter.restore();
}

QColor inkOn(const QColor& background) {
    // The lightness at which black and white have the same contrast.
    constexpr int middle = 130;
    return qGray(background.rgb()) > middle ? QColor{18, 20, 24} : QColor{Qt::white};
}

} // namespace kivo::device::app
