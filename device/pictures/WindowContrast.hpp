#pragma once

#include <QImage>
#include <QWidget>

namespace kivo::device::pictures {

/// The contrast of the worst text, and the number of texts.
struct WidgetContrast {
    double least = 21;
    int texts = 0;
};

/// The contrasts of the texts on the widgets of a window, by the pixels of `picture`, which shows the window: of each
/// text the commonest colour against the colour that stands out most. Leaves out disabled widgets and all of `except`.
WidgetContrast widgetContrast(const QWidget& window, const QWidget& except, const QImage& picture);

} // namespace kivo::device::pictures
