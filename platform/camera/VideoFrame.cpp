#include <kivo/platform/VideoFrame.hpp>

#include <algorithm>

namespace kivo::platform {
namespace {

std::size_t halved(int side) {
    return (static_cast<std::size_t>(side) + 1) / 2;
}

/// Fixed point with 16 bits behind the point.
std::uint8_t clamped(int value) {
    return static_cast<std::uint8_t>(std::clamp(value >> 16, 0, 255));
}

std::vector<std::uint8_t> rgbOfGray(const std::vector<std::uint8_t>& gray) {
    std::vector<std::uint8_t> rgb;
    rgb.reserve(gray.size() * 3);
    for (const auto brightness : gray) {
        rgb.insert(rgb.end(), 3, brightness);
    }
    return rgb;
}

std::vector<std::uint8_t> rgbOfI420(const VideoFrame& frame) {
    const auto width = static_cast<std::size_t>(frame.width);
    const auto height = static_cast<std::size_t>(frame.height);
    const auto* const brightness = frame.bytes.data();
    const auto* const blue = brightness + width * height;
    const auto* const red = blue + halved(frame.width) * halved(frame.height);
    std::vector<std::uint8_t> rgb(width * height * 3);
    auto* out = rgb.data();
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const auto colour = y / 2 * halved(frame.width) + x / 2;
            const int luma = (brightness[y * width + x] << 16) + (1 << 15);
            const int cb = blue[colour] - 128;
            const int cr = red[colour] - 128;
            // BT.601: 1.402, 0.344136, 0.714136 and 1.772.
            *out++ = clamped(luma + 91881 * cr);
            *out++ = clamped(luma - 22553 * cb - 46801 * cr);
            *out++ = clamped(luma + 116130 * cb);
        }
    }
    return rgb;
}

} // namespace

bool VideoFrame::isWhole() const {
    if (width < 1 || height < 1 || width > largestSide || height > largestSide) {
        return false;
    }
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    switch (format) {
    case Format::gray:
        return bytes.size() == pixels;
    case Format::i420:
        return bytes.size() == pixels + 2 * halved(width) * halved(height);
    case Format::rgb:
        return bytes.size() == 3 * pixels;
    }
    return false;
}

std::vector<std::uint8_t> VideoFrame::rgb() const {
    if (!isWhole()) {
        return {};
    }
    switch (format) {
    case Format::gray:
        return rgbOfGray(bytes);
    case Format::i420:
        return rgbOfI420(*this);
    case Format::rgb:
        return bytes;
    }
    return {};
}

} // namespace kivo::platform
