#pragma once

#include <kivo/Export.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kivo::platform {

/// One picture of a camera, its rows from the top and without gaps between them.
struct KIVO_EXPORT VideoFrame {
    /// How a pixel is stored.
    enum class Format {
        /// One byte of brightness a pixel.
        gray,
        /// A plane of brightness as for `gray`, then two planes of colour (BT.601, full range), each half as wide
        /// and as high, rounded up.
        i420,
        /// Red, green and blue, one byte each.
        rgb,
    };

    /// The largest width and height of a picture that is read: 8K video, and photographs of 50 megapixels.
    static constexpr int largestSide = 8192;

    /// Width and height in pixels, the form of a pixel, and the rows from the top without gaps.
    int width = 0;
    int height = 0;
    Format format = Format::gray;
    std::vector<std::uint8_t> bytes;

    /// Whether there are as many bytes as width, height and format ask for, and no side is empty or beyond
    /// `largestSide`.
    bool isWhole() const;

    /// The bytes of the same picture in the format `rgb`; any other format is converted. Empty for a picture that is
    /// not whole.
    std::vector<std::uint8_t> rgb() const;
};

} // namespace kivo::platform
