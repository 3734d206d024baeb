#pragma once

#include <QColor>
#include <algorithm>
#include <cmath>

namespace kivo::device {

/// The contrast of two opaque colours in the sense of the Web Content Accessibility Guidelines, from 1 to 21.
inline double contrastOf(const QColor& one, const QColor& other) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double level) {
            return level <= 0.04045 ? level / 12.92 : std::pow((level + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace kivo::device
