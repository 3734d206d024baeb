#pragma once

#include <kivo/platform/ui/Window.hpp>

#include <QRegion>
#include <map>
#include <set>

namespace kivo::device {

/// Finds out what must be drawn anew: where a changed view was and is, where one came, went or moved.
class Repaints {
public:
    void note(const platform::View& view) { changed_.insert(&view); }

    /// What has to be drawn since the last call.
    QRegion take(platform::Window& window);

private:
    /// Where each visible view and those below it draw, on the display.
    using Areas = std::map<const platform::View*, QRectF>;

    static QRectF collect(const platform::View& view, QPointF origin, Areas& areas);

    std::set<const platform::View*> changed_;
    Areas areas_;
};

} // namespace kivo::device
