#pragma once

#include <kivo/platform/VideoFrame.hpp>

#include <string_view>

namespace kivo::test {

/// How a camera gets to see a QR code.
struct Conditions {
    /// The size of the code's smallest square in the picture, in pixels.
    double module = 6;
    /// Degrees by which the code is turned in its plane, and by which the plane is turned away from the camera.
    double turned = 0;
    double tilted = 0;
    /// The half width of the blur, in pixels.
    int blur = 0;
    /// The largest change of a pixel's brightness by noise.
    int noise = 0;
    /// The brightness of black and of white, 0 to 255.
    int black = 20;
    int white = 235;
    /// Where the code's middle lies, from the picture's.
    double right = 0;
};

/// A gray picture of 640 x 480 of a QR code with this text.
platform::VideoFrame seen(std::string_view text, const Conditions& conditions);

/// Two pictures of one size in one, the darker pixel of each pair.
platform::VideoFrame overlaid(platform::VideoFrame first, const platform::VideoFrame& second);

} // namespace kivo::test
