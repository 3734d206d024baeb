#include "support/CameraView.hpp"

#include <kivo/simulator/Camera.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <random>

namespace kivo::test {
namespace {

using platform::VideoFrame;

constexpr int width = 640;
constexpr int height = 480;
/// How far away the code is, in pixels.
constexpr double distance = 900;
/// What a module of the simulator's picture measures.
constexpr double drawnModule = 8;

std::uint8_t pixelOf(const VideoFrame& frame, double x, double y) {
    const bool isInside = x >= 0 && y >= 0 && x < frame.width && y < frame.height;
    return isInside ? frame.bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(frame.width) +
                                  static_cast<std::size_t>(x)]
                    : std::uint8_t{255};
}

/// The mean of the four quarters of a pixel.
double sample(const VideoFrame& code, const Conditions& conditions, int x, int y) {
    const double turn = conditions.turned * std::numbers::pi / 180;
    const double tilt = conditions.tilted * std::numbers::pi / 180;
    double sum = 0;
    for (const double right : {0.25, 0.75}) {
        for (const double down : {0.25, 0.75}) {
            const double seenX = x + right - width / 2.0 - conditions.right;
            const double seenY = y + down - height / 2.0;
            const double planeX = distance * seenX / (distance * std::cos(tilt) - seenX * std::sin(tilt));
            const double planeY = seenY * (distance + planeX * std::sin(tilt)) / distance;
            const double scale = drawnModule / conditions.module;
            sum += pixelOf(code, code.width / 2.0 + scale * (planeX * std::cos(turn) - planeY * std::sin(turn)),
                           code.height / 2.0 + scale * (planeX * std::sin(turn) + planeY * std::cos(turn)));
        }
    }
    return sum / 4;
}

/// A mean along rows (step 1) or columns (step `width`).
std::vector<double> blurred(const std::vector<double>& from, int reach, int step) {
    std::vector<double> to(from.size());
    const int size = static_cast<int>(from.size());
    for (int i = 0; i < size; ++i) {
        double sum = 0;
        for (int offset = -reach; offset <= reach; ++offset) {
            sum += from[static_cast<std::size_t>(std::clamp(i + offset * step, 0, size - 1))];
        }
        to[static_cast<std::size_t>(i)] = sum / (2 * reach + 1);
    }
    return to;
}

} // namespace

VideoFrame seen(std::string_view text, const Conditions& conditions) {
    const auto code = simulator::qrCodeFrame(text);
    std::vector<double> light;
    light.reserve(std::size_t{width} * height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double share = sample(code, conditions, x, y) / 255;
            light.push_back(conditions.black + share * (conditions.white - conditions.black));
        }
    }
    if (conditions.blur > 0) {
        light = blurred(blurred(light, conditions.blur, 1), conditions.blur, width);
    }
    std::minstd_rand random;
    VideoFrame frame{.width = width, .height = height, .format = VideoFrame::Format::gray, .bytes = {}};
    for (const double value : light) {
        const int span = 2 * conditions.noise + 1;
        const int noise = static_cast<int>(random() % static_cast<unsigned>(span)) - conditions.noise;
        frame.bytes.push_back(static_cast<std::uint8_t>(std::clamp(static_cast<int>(value) + noise, 0, 255)));
    }
    return frame;
}

VideoFrame overlaid(VideoFrame first, const VideoFrame& second) {
    std::ranges::transform(first.bytes, second.bytes, first.bytes.begin(),
                           [](auto one, auto other) { return std::min(one, other); });
    return first;
}

} // namespace kivo::test
