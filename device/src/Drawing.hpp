#pragma once

#include "Content.hpp"

#include <kivo/platform/ui/View.hpp>

#include <QPainter>
#include <QRectF>

namespace kivo::device {

/// Draws a view and all below it, in the coordinates of its superview. What lies outside the painter's clip is skipped.
void drawTree(QPainter& painter, platform::View& view, const Moment& moment);

/// What a view itself may draw on, beyond its frame where it throws a shadow; in its own coordinates.
QRectF drawnArea(const platform::View& view);

/// Whether the view cuts off what lies outside it.
bool clips(const platform::View& view);

} // namespace kivo::device
