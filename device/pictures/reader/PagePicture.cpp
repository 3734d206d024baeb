#include "pictures/reader/PagePicture.hpp"

#include <QFont>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <cstring>

namespace kivo::device::pictures {
namespace {

constexpr QSize size{1400, 960};
/// Pixels a millimetre. A page is 125 mm by 88 mm.
constexpr double scale = 9.6;
constexpr QRectF page{100, 57, 125 * scale, 88 * scale};
const QColor ink{28, 34, 46};

QString words(std::string_view part) {
    return QString::fromUtf8(part.data(), static_cast<qsizetype>(part.size())).replace('<', ' ').simplified();
}

/// Fine waves as security printing has them.
void drawWaves(QPainter& painter) {
    painter.save();
    QPainterPath edge;
    edge.addRoundedRect(page, 22, 22);
    painter.setClipPath(edge);
    painter.setBrush(Qt::NoBrush);
    for (int row = 0; row < 34; ++row) {
        QPainterPath wave;
        constexpr int steps = 200;
        for (int i = 0; i <= steps; ++i) {
            const auto x = page.left() + page.width() * i / steps;
            const auto y = page.top() + row * 27 + 11 * std::sin((x + row * 38) / 72);
            if (i == 0) {
                wave.moveTo(x, y);
            } else {
                wave.lineTo(x, y);
            }
        }
        painter.setPen(QPen{row % 2 == 0 ? QColor{96, 140, 176, 70} : QColor{150, 120, 170, 55}, 1.5});
        painter.drawPath(wave);
    }
    painter.restore();
}

void drawPortrait(QPainter& painter, const QRectF& frame) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor{214, 222, 230});
    painter.drawRect(frame);
    painter.save();
    painter.setClipRect(frame);
    const auto centre = frame.center();
    painter.setBrush(QColor{66, 84, 112});
    painter.drawEllipse(QPointF{centre.x(), frame.bottom() + 10}, 125, 130);
    painter.setBrush(QColor{92, 62, 44});
    painter.drawEllipse(centre + QPointF{0, -40}, 82, 98);
    painter.setBrush(QColor{226, 186, 158});
    painter.drawEllipse(centre + QPointF{0, -18}, 64, 84);
    painter.setBrush(QColor{92, 62, 44});
    painter.drawChord(QRectF{centre.x() - 72, centre.y() - 122, 144, 120}, 0, 180 * 16);
    painter.restore();
}

void drawFields(QPainter& painter, const std::vector<std::string>& lines) {
    const auto& names = lines.front();
    const auto gap = names.find("<<", 5);
    const std::pair<const char*, QString> fields[] = {
        {"Surname", words(names.substr(5, gap - 5))},
        {"Given names", words(names.substr(gap))},
        {"Nationality", "UTOPIAN"},
        {"Passport No.", words(lines.back().substr(0, 9))},
    };
    double y = page.top() + 150;
    for (const auto& [name, value] : fields) {
        QFont font{"Inter"};
        font.setPixelSize(22);
        painter.setFont(font);
        painter.setPen(QColor{86, 98, 120});
        painter.drawText(QPointF{page.left() + 430, y}, name);
        font.setPixelSize(38);
        font.setWeight(QFont::Medium);
        painter.setFont(font);
        painter.setPen(ink);
        painter.drawText(QPointF{page.left() + 430, y + 44}, value);
        y += 108;
    }
}

/// The lines of the zone, each letter in its place: ten letters to an inch.
void drawZone(QPainter& painter, const std::vector<std::string>& lines) {
    painter.fillRect(QRectF{page.left(), page.bottom() - 232, page.width(), 210}, QColor{250, 251, 250});
    QFont font{"OCR B"};
    font.setPixelSize(40);
    painter.setFont(font);
    painter.setPen(QColor{14, 16, 20});
    double y = page.bottom() - 150;
    for (const auto& line : lines) {
        double x = page.left() + 66;
        for (const char letter : line) {
            painter.drawText(QRectF{x - 10, y - 40, 45.4, 60}, Qt::AlignCenter, QString{QLatin1Char{letter}});
            x += 2.54 * scale;
        }
        y += 6.35 * scale;
    }
}

} // namespace

platform::VideoFrame pagePicture(const std::vector<std::string>& lines) {
    QImage picture{size, QImage::Format_RGB888};
    QPainter painter{&picture};
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    QLinearGradient table{{0, 0}, QPointF{size.width() * 1.0, size.height() * 1.0}};
    table.setColorAt(0, QColor{120, 98, 80});
    table.setColorAt(1, QColor{88, 70, 56});
    painter.fillRect(picture.rect(), table);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor{0, 0, 0, 50});
    painter.drawRoundedRect(page.translated(6, 12), 24, 24);
    painter.setBrush(QColor{240, 244, 242});
    painter.drawRoundedRect(page, 22, 22);
    drawWaves(painter);
    QFont font{"Inter"};
    font.setPixelSize(40);
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(QColor{20, 72, 140});
    painter.drawText(QPointF{page.left() + 60, page.top() + 82}, "PASSPORT");
    painter.drawText(QPointF{page.left() + 430, page.top() + 82}, "UTOPIA");
    drawPortrait(painter, {page.left() + 60, page.top() + 116, 300, 388});
    drawFields(painter, lines);
    drawZone(painter, lines);
    painter.end();

    platform::VideoFrame frame{
        .width = size.width(), .height = size.height(), .format = platform::VideoFrame::Format::rgb, .bytes = {}};
    for (int y = 0; y < picture.height(); ++y) {
        const auto* const row = picture.constScanLine(y);
        frame.bytes.insert(frame.bytes.end(), row, row + qsizetype{3} * picture.width());
    }
    return frame;
}

} // namespace kivo::device::pictures
