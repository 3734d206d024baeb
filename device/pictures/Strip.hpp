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

/// A row of phones with the steps of a road on them, `width` pixels wide, on a transparent ground. The captions are for
/// a page of the appearance `isDark`.
QImage strip(const std::vector<Step>& steps, int width, bool isDark);

/// The first phone of a strip alone, on the opaque ground of such a page.
QImage phone(const QImage& screen, int width, bool isDark);

/// The colours of a page of that appearance.
QColor pageColor(bool isDark);

} // namespace kivo::device::pictures
