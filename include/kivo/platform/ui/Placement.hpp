#pragma once

#include <optional>

namespace kivo::platform {

/// The place of a view in its superview, unless a stack view places the view. All numbers are in points.
///
/// A dimension without a value follows from the two edges on its axis, or else from the view's own needs. A position
/// without a value is the superview's origin. In a screen's own view, distances count from the safe area.
struct Placement {
    /// The distance of each edge from the superview's.
    std::optional<double> top{};
    std::optional<double> left{};
    std::optional<double> bottom{};
    std::optional<double> right{};
    /// The distance of the edge at which a line of the person's language begins, and of the edge at which it ends.
    /// Where `left` or `right` gives the same edge, that counts.
    std::optional<double> leading{};
    std::optional<double> trailing{};
    /// Offsets of the view's centre from the superview's.
    std::optional<double> centerX{};
    std::optional<double> centerY{};
    /// The view's size; absent, the other members or the view's own needs decide.
    std::optional<double> width{};
    std::optional<double> height{};
    /// Used when `height` is absent and the view's own needs decide.
    std::optional<double> minimumHeight{};
    /// A view between two edges that is wider than this gets this width, in the middle between the edges.
    std::optional<double> maximumWidth{};
    /// For a view that decides on its height itself, such as a picture: the largest part that it takes of the display's
    /// height beyond 300 points, which texts and buttons need; from 0 to 1. In a scroll view such a view makes room
    /// before anything must be scrolled (`ScrollView`).
    std::optional<double> shareOfDisplay{};
    /// Whether the view takes what a stack view has left over; several such views share it.
    bool grows = false;
    /// Whether distances in a screen's own view count from the edges of the display.
    bool ignoresSafeArea = false;

    bool operator==(const Placement&) const = default;
};

} // namespace kivo::platform
