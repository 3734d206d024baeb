#pragma once

#include "Models.hpp"

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace kivo::device::app {

/// The width of all that is drawn around the display, in points: the body's edge and the buttons at its sides.
double marginAround(const Model& model);

/// Draws the body of the device around `display`, with a shadow on the desk.
void drawBody(QPainter& painter, const Model& model, const QRectF& display);

/// Draws over a picture of the display what the picture lacks: the body at the rounded corners, the camera, the status
/// bar with `time`, and the bar at the lower edge, in `ink` at the top and `inkBelow` at the lower edge. The status bar
/// follows the painter's layout direction. One unit of the painter is a point.
void drawOverDisplay(QPainter& painter, const Model& model, bool isLandscape, const QRectF& display,
                     const QString& time, const QColor& ink, const QColor& inkBelow);

/// The colour for texts on `background`: black or white, by the higher contrast.
QColor inkOn(const QColor& background);

} // namespace kivo::device::app
