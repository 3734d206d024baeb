#pragma once

#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Geometry.hpp>

#include <optional>

namespace kivo::platform {

/// How a view's box is drawn: corners, border, shadow and clipping.
struct Layer {
    /// The radius of the corners, and the border; a border without a colour is not drawn.
    double cornerRadius = 0;
    double borderWidth = 0;
    std::optional<Color> borderColor{};
    /// Whether drawing outside the bounds is cut off.
    bool masksToBounds = false;
    std::optional<Color> shadowColor{};
    Size shadowOffset{};
    double shadowOpacity = 0;
    double shadowRadius = 0;

    bool operator==(const Layer&) const = default;
};

} // namespace kivo::platform
