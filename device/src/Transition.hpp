#pragma once

#include "Motion.hpp"

#include <kivo/platform/ui/Window.hpp>

#include <QPainter>
#include <QPixmap>
#include <QRectF>
#include <cstddef>
#include <utility>

namespace kivo::device {

/// The depth of the stack of screens in a window.
struct Depth {
    std::size_t presented = 0;
    std::size_t pushed = 0;
    bool isAlert = false;

    bool operator==(const Depth&) const = default;
};

Depth depthOf(const platform::Window& window);

/// The passage from one picture of a window to the next.
class Transition {
public:
    enum class Kind { none, push, pop, present, dismiss, fade };

    static Kind kindOf(const Depth& before, const Depth& after);

    Transition() = default;

    /// `isMirrored` for a language that is read from right to left: screens are pushed in from the left.
    Transition(Kind kind, QPixmap before, MotionTime start, bool isMirrored)
        : kind_{kind}
        , before_{std::move(before)}
        , start_{start}
        , isMirrored_{isMirrored} {}

    bool isRunning() const { return kind_ != Kind::none; }

    /// Whether both pictures have reached their places.
    bool isOver(MotionTime now) const;

    /// Draws both pictures as they are at `now`.
    void draw(QPainter& painter, const QPixmap& after, QSizeF size, MotionTime now) const;

private:
    Kind kind_ = Kind::none;
    QPixmap before_;
    MotionTime start_{};
    bool isMirrored_ = false;
};

} // namespace kivo::device
