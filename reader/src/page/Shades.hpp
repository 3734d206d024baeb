#pragma once

#include <kivo/platform/VideoFrame.hpp>

#include <cstdint>
#include <vector>

namespace kivo::reader {

/// A picture in shades of gray, its rows from the top without gaps.
struct Shades {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes{};

    std::uint8_t at(int x, int y) const {
        return bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }

    /// The shade between pixels; beyond the edges, that of the nearest pixel.
    double between(double x, double y) const;
};

/// The brightness of a camera's picture, reduced so that no side is longer than `longest` pixels. Empty for a picture
/// that is not whole.
Shades shadesOf(const platform::VideoFrame& frame, int longest);

/// The picture with each pixel the mean of what it covers, at most as large as before.
Shades reduced(const Shades& shades, int longest);

/// The shade below which this share of the pixels lies.
int shadeBelowWhich(const Shades& shades, double share);

} // namespace kivo::reader
