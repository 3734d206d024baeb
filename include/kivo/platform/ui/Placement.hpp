#pragma once

#include <optional>

namespace kivo::platform {

/// Where a view lies in its superview, unless a stack view places it. All in points.
///
/// A dimension without a value comes from the two edges on its axis, else from what the view itself needs. A position
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
    /// Counts where `height` is absent and the view itself decides.
    std::optional<double> minimumHeight{};
    /// Whether distances count from the edges of the display also in a screen's own view.
    bool ignoresSafeArea = false;

    bool operator==(const Placement&) const = default;
};

} // namespace kivo::platform
