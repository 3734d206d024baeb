#include "page/Shades.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kivo::reader {
namespace {

Shades brightnessOf(const platform::VideoFrame& frame) {
    Shades shades{.width = frame.width, .height = frame.height};
    const auto pixels = static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);
    if (frame.format != platform::VideoFrame::Format::rgb) { // the plane of brightness stands first
        shades.bytes.assign(frame.bytes.begin(), frame.bytes.begin() + static_cast<std::ptrdiff_t>(pixels));
        return shades;
    }
    shades.bytes.reserve(pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        const auto* colour = &frame.bytes[i * 3];
        shades.bytes.push_back(static_cast<std::uint8_t>((colour[0] * 77U + colour[1] * 150U + colour[2] * 29U) >> 8));
    }
    return shades;
}

} // namespace

double Shades::between(double x, double y) const {
    const auto left = std::clamp(static_cast<int>(std::floor(x)), 0, width - 1);
    const auto top = std::clamp(static_cast<int>(std::floor(y)), 0, height - 1);
    const int right = std::min(left + 1, width - 1);
    const int bottom = std::min(top + 1, height - 1);
    const double across = std::clamp(x - left, 0.0, 1.0);
    const double down = std::clamp(y - top, 0.0, 1.0);
    const auto shade = [this](int column, int row) { return static_cast<double>(at(column, row)); };
    return std::lerp(std::lerp(shade(left, top), shade(right, top), across),
                     std::lerp(shade(left, bottom), shade(right, bottom), across), down);
}

Shades reduced(const Shades& shades, int longest) {
    const int longer = std::max(shades.width, shades.height);
    if (longer <= longest) {
        return shades;
    }
    const double step = double(longer) / longest;
    Shades small{.width = std::max(1, static_cast<int>(shades.width / step)),
                 .height = std::max(1, static_cast<int>(shades.height / step))};
    small.bytes.reserve(static_cast<std::size_t>(small.width) * static_cast<std::size_t>(small.height));
    for (int y = 0; y < small.height; ++y) {
        const int top = static_cast<int>(y * step);
        const int bottom = std::clamp(static_cast<int>((y + 1) * step), top + 1, shades.height);
        for (int x = 0; x < small.width; ++x) {
            const int left = static_cast<int>(x * step);
            const int right = std::clamp(static_cast<int>((x + 1) * step), left + 1, shades.width);
            unsigned sum = 0;
            for (int row = top; row < bottom; ++row) {
                for (int column = left; column < right; ++column) {
                    sum += shades.at(column, row);
                }
            }
            small.bytes.push_back(
                static_cast<std::uint8_t>(sum / static_cast<unsigned>((bottom - top) * (right - left))));
        }
    }
    return small;
}

Shades shadesOf(const platform::VideoFrame& frame, int longest) {
    return frame.isWhole() ? reduced(brightnessOf(frame), longest) : Shades{};
}

int shadeBelowWhich(const Shades& shades, double share) {
    std::array<std::size_t, 256> counts{};
    for (const auto byte : shades.bytes) {
        ++counts[byte];
    }
    auto left = static_cast<double>(shades.bytes.size()) * share;
    for (std::size_t shade = 0; shade < counts.size(); ++shade) {
        left -= static_cast<double>(counts[shade]);
        if (left < 0) {
            return static_cast<int>(shade);
        }
    }
    return 255;
}

} // namespace kivo::reader
