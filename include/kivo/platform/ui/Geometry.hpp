#pragma once

namespace kivo::platform {

/// Lengths are in points throughout: units of the layout, not of the display.
struct Point {
    /// The distances from the left and from the top, in points.
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// A width and a height, in points.
struct Size {
    /// Each is 0 or more.
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

/// A rectangle, in points.
struct Rect {
    /// The upper left corner and the size.
    Point origin{};
    Size size{};

    /// The left edge.
    double left() const { return origin.x; }

    /// The upper edge.
    double top() const { return origin.y; }

    /// The right edge.
    double right() const { return origin.x + size.width; }

    /// The lower edge.
    double bottom() const { return origin.y + size.height; }

    /// Whether the point lies inside, or on the left or the upper edge.
    bool contains(Point point) const {
        return point.x >= left() && point.x < right() && point.y >= top() && point.y < bottom();
    }

    bool operator==(const Rect&) const = default;
};

/// Distances from the four edges, inwards.
struct EdgeInsets {
    /// The distance from each edge, in points.
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;

    bool operator==(const EdgeInsets&) const = default;
};

/// `rect` without `insets`; its width and height are never negative.
constexpr Rect inset(const Rect& rect, const EdgeInsets& insets) {
    const auto rest = [](double length, double taken) { return length > taken ? length - taken : 0; };
    return {.origin = {rect.origin.x + insets.left, rect.origin.y + insets.top},
            .size = {rest(rect.size.width, insets.left + insets.right),
                     rest(rect.size.height, insets.top + insets.bottom)}};
}

} // namespace kivo::platform
