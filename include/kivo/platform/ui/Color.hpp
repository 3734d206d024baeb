#pragma once

#include <kivo/Export.hpp>

#include <optional>
#include <string_view>

namespace kivo::platform {

/// A colour in sRGB; each channel from 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    static constexpr Color white(double level = 1, double alpha = 1) { return {level, level, level, alpha}; }

    static constexpr Color black() { return white(0); }

    static constexpr Color clear() { return white(0, 0); }

    /// The blue of buttons and links without a colour of their own.
    static constexpr Color systemBlue() { return {0, 122.0 / 255, 1, 1}; }

    /// The colour of that name in the host's asset catalogue; absent when the catalogue has no such colour.
    KIVO_EXPORT static std::optional<Color> named(std::string_view name);

    bool operator==(const Color&) const = default;
};

} // namespace kivo::platform
