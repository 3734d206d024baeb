#pragma once

namespace kivo::platform {

/// Lengths are in points throughout: units of the layout, not of the display.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

struct Rect {
    Point origin{};
    Size size{};

    double left() const { return origin.x; }

    double top() const { return origin.y; }

    double right() const { return origin.x + size.width; }

    double bottom() const { return origin.y + size.height; }

    bool contains(Point point) const {
        return point.x >= left() && point.x < right() && point.y >= top() && point.y < bottom();
    }

    bool operator==(const Rect&) const = default;
};

/// Distances from the four edges, inwards.
struct EdgeInsets {
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
