#pragma once

#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>

#include <optional>
#include <string>

namespace kivo::platform {

/// A text with attributes for its whole length. The view's own attribute replaces an absent attribute.
struct AttributedText {
    /// The text and its colour; without a colour the view's own counts.
    std::string text{};
    std::optional<Color> foregroundColor{};
    /// Extra space between characters, in points.
    std::optional<double> kern{};
    std::optional<Font> font{};

    bool operator==(const AttributedText&) const = default;
};

} // namespace kivo::platform
