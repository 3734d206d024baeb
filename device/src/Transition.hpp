#pragma once

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

    Transition(Kind kind, QPixmap before)
        : kind_{kind}
        , before_{std::move(before)} {}

    bool isRunning() const { return kind_ != Kind::none; }

    /// Draws both pictures at `progress` from 0 to 1 of the way.
    void draw(QPainter& painter, const QPixmap& after, QSizeF size, double progress) const;

private:
    Kind kind_ = Kind::none;
    QPixmap before_;
};

} // namespace kivo::device
