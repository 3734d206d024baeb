#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/UserInterfaceStyle.hpp>

#include <optional>
#include <string_view>

namespace kivo::platform {

/// A colour in sRGB, each channel from 0 to 1, with perhaps another colour for the dark appearance. A view keeps both:
/// the code that draws the view asks `in` with the view's own appearance.
struct Color {
    /// The channels of the dark variant.
    struct Variant {
        /// As in the colour itself.
        double red = 0;
        double green = 0;
        double blue = 0;
        double alpha = 1;

        bool operator==(const Variant&) const = default;
    };

    /// The channels, from 0 to 1; an alpha of 1 is opaque.
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    /// The colour in the dark appearance; absent where it is the same.
    std::optional<Variant> dark{};

    /// `light` with the channels of `dark` for the dark appearance.
    static constexpr Color adaptive(const Color& light, const Color& dark) {
        return {light.red, light.green, light.blue, light.alpha,
                Variant{.red = dark.red, .green = dark.green, .blue = dark.blue, .alpha = dark.alpha}};
    }

    /// The colour as `style` shows it, without another variant.
    constexpr Color in(UserInterfaceStyle style) const {
        if (style == UserInterfaceStyle::dark && dark) {
            return {dark->red, dark->green, dark->blue, dark->alpha};
        }
        return {red, green, blue, alpha};
    }

    /// A grey of that lightness, white by default.
    static constexpr Color white(double level = 1, double alpha = 1) { return {level, level, level, alpha}; }

    /// Opaque black.
    static constexpr Color black() { return white(0); }

    /// Fully transparent.
    static constexpr Color clear() { return white(0, 0); }

    /// The blue of buttons and links without a colour of their own.
    static constexpr Color systemBlue() {
        return adaptive({0, 102.0 / 255, 214.0 / 255, 1}, {64.0 / 255, 156.0 / 255, 1, 1});
    }

    /// The colour of that name in the host's asset catalogue, with its dark variant if it has one; absent when the
    /// catalogue has no such colour.
    KIVO_EXPORT static std::optional<Color> named(std::string_view name);

    bool operator==(const Color&) const = default;
};

} // namespace kivo::platform
