#pragma once

#include <optional>

namespace kivo::platform {

/// The place of a view in its superview, unless a stack view places the view. All numbers are in points.
///
/// A dimension without a value follows from the two edges on its axis, or else from the view's own needs. A position
/// without a value is the superview's origin. In a screen's own view, distances count from the safe area.
struct Placement {
    std::optional<double> top{};
    std::optional<double> left{};
    std::optional<double> bottom{};
    std::optional<double> right{};
    /// Offsets of the view's centre from the superview's.
    std::optional<double> centerX{};
    std::optional<double> centerY{};
    std::optional<double> width{};
    std::optional<double> height{};
    /// Used when `height` is absent and the view's own needs decide.
    std::optional<double> minimumHeight{};
    /// Whether distances in a screen's own view count from the edges of the display.
    bool ignoresSafeArea = false;

    bool operator==(const Placement&) const = default;
};

} // namespace kivo::platform
