#pragma once

#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <chrono>
#include <map>
#include <memory>
#include <vector>

namespace kivo::device {

/// A time on the clock of the phone's motion.
using MotionTime = std::chrono::milliseconds;

/// The small motions over a screen that tell what has happened to its fields: a field that gets its first character
/// lights up, and fields that lose all their characters at once, because a code was refused, shake.
class Motion {
public:
    /// Compares the fields with those of the last call. With `isShown` false nothing moves for what has changed. A code
    /// that was refused under an alert, or while `isPassing` tells that a screen comes or goes, shakes afterwards.
    void follow(const platform::Window& window, MotionTime now, bool isShown, bool isPassing);

    bool isRunning() const { return !fills_.empty() || shake_.isRunning; }

    /// Whether the fields are not at their places.
    bool isShaking() const { return shake_.isRunning; }

    /// The area on which the motions draw, in points of the display. Ends the motions that are over by `now`.
    std::vector<QRectF> areas(MotionTime now);

    /// Draws over `frame`, the picture of the screen without motion, whose pixels are `pixelsOfPoint` a point. One unit
    /// of the painter is a point.
    void draw(QPainter& painter, const QPixmap& frame, double pixelsOfPoint, MotionTime now) const;

private:
    struct Known {
        std::weak_ptr<platform::TextField> field;
        bool hasText;
    };

    struct Fill {
        std::weak_ptr<platform::TextField> field;
        MotionTime start;
    };

    struct Shake {
        QRectF area;
        MotionTime start{};
        bool isDue = false;
        bool isRunning = false;
    };

    void learn(const platform::Window& window);
    /// The rows of the display with the known fields.
    QRectF rowsOfFields() const;

    std::map<const platform::TextField*, Known> known_;
    std::vector<Fill> fills_;
    Shake shake_;
};

} // namespace kivo::device
