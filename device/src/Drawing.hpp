#pragma once

#include "Content.hpp"

#include <kivo/platform/ui/Window.hpp>

#include <QImage>
#include <QPainter>
#include <QRectF>
#include <QRegion>
#include <map>
#include <set>

namespace kivo::device {

/// Draws a view and all below it, in the coordinates of its superview. Skips the parts outside the painter's clip.
void drawTree(QPainter& painter, platform::View& view, const DrawState& state);

/// The colour of a display without any view.
QColor groundOf(const platform::Window& window);

/// The whole window as it is laid out, with `scale` pixels for a point.
QImage pictureOf(platform::Window& window, double scale, const DrawState& state);

/// Whether the view cuts off the parts of its subviews that lie outside it.
bool clips(const platform::View& view);

/// Whether a view can be out of sight because it is scrolled away.
bool isInScrollView(const platform::View& view);

/// The part of a view that no view around it cuts off, on the display.
QRectF visiblePart(const platform::View& view);

/// Finds the areas to draw anew: the former and the present place of every view that changed, came, went or moved.
class Repaints {
public:
    void note(const platform::View& view) { changed_.insert(&view); }

    /// The area to draw since the last call.
    QRegion take(platform::Window& window);

private:
    /// The area on the display on which each visible view and its subviews draw.
    using Areas = std::map<const platform::View*, QRectF>;

    static QRectF collect(const platform::View& view, QPointF origin, Areas& areas);

    std::set<const platform::View*> changed_;
    Areas areas_;
};

} // namespace kivo::device
