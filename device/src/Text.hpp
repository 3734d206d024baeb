#pragma once

#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/Geometry.hpp>
#include <kivo/platform/ui/TextStyled.hpp>

#include <QColor>
#include <QFont>
#include <QPainter>
#include <QRectF>
#include <QString>
#include <optional>
#include <string_view>

namespace kivo::device {

QString toQt(std::string_view text);
/// The colour as a view of that appearance shows it.
QColor toQt(const platform::Color& color, platform::UserInterfaceStyle style);
QRectF toQt(const platform::Rect& rect);
platform::Rect fromQt(const QRectF& rect);

/// The typeface with a name such as "DejaVu Sans" (a family) or "Karbon-Medium" (a family and a style).
std::optional<QFont> installedTypeface(const QString& name);

/// The font for drawing and measuring. Where its typeface is not installed, and for the system's own: Inter, or the
/// desktop's typeface where Inter is not installed. Main thread.
QFont toQt(const platform::Font& font);

Qt::Alignment toQt(platform::TextAlignment alignment);

/// The size of the text with its lines broken at `widthLimit`.
platform::Size measureText(const QString& text, const QFont& font, double widthLimit);

/// How a text is drawn.
struct Letters {
    bool areDrawn = true;
    /// Whether a block stands in the place of each line.
    bool areBlocks = false;
    /// The colour of the blocks; absent for the text's own.
    std::optional<QColor> color{};
};

/// Draws the text into `area`, with its lines broken at the area's width: in the middle with `AlignVCenter`, otherwise
/// at the top. The lines of a short centred text have like lengths.
void drawText(QPainter& painter, const QRectF& area, const QString& text, const QFont& font, Qt::Alignment alignment,
              const Letters& letters);

} // namespace kivo::device
