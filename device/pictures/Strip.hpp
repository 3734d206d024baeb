#pragma once

#include <QImage>
#include <QString>
#include <vector>

namespace kivo::device::pictures {

/// A screen of the strip, with the words below.
struct Step {
    QString caption;
    QImage screen;
};

/// The page on which a picture is shown, and the reading direction of its screens.
struct Page {
    bool isDark = false;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

/// A row of phones or tablets, as the first screen's size tells, with the steps of a road on them, `width` pixels wide,
/// on a transparent ground. Throws a sentence where a caption or a clock is hard to read.
QImage strip(const std::vector<Step>& steps, int width, const Page& page);

/// The first phone of a strip alone, on the opaque ground of such a page.
QImage phone(const QImage& screen, int width, const Page& page);

/// The colours of a page of that appearance.
QColor pageColor(bool isDark);

} // namespace kivo::device::pictures
