#include <kivo/simulator/Camera.hpp>

#include <qrencode.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace kivo::simulator {
namespace {

constexpr int width = 1280;
constexpr int height = 720;
constexpr int largestModule = 8;
/// What a reader needs of white around the code, in modules.
constexpr int margin = 4;

struct FreeCode {
    void operator()(QRcode* code) const { QRcode_free(code); }
};

std::unique_ptr<QRcode, FreeCode> encode(std::string_view text) {
    // The more a code holds, the less of it may be spent on correcting errors.
    for (const auto level : {QR_ECLEVEL_M, QR_ECLEVEL_L}) {
        if (auto* const code = QRcode_encodeData(static_cast<int>(text.size()),
                                                 reinterpret_cast<const unsigned char*>(text.data()), 0, level)) {
            return std::unique_ptr<QRcode, FreeCode>{code};
        }
    }
    throw std::runtime_error{"No QR code holds " + std::to_string(text.size()) + " bytes."};
}

} // namespace

platform::VideoFrame qrCodeFrame(std::string_view text) {
    const auto code = encode(text);
    const int module = std::min(largestModule, height / (code->width + 2 * margin));
    const int left = (width - code->width * module) / 2;
    const int top = (height - code->width * module) / 2;
    platform::VideoFrame frame{.width = width,
                               .height = height,
                               .format = platform::VideoFrame::Format::gray,
                               .bytes = std::vector<std::uint8_t>(std::size_t{width} * height, 255)};
    for (int y = 0; y < code->width * module; ++y) {
        for (int x = 0; x < code->width * module; ++x) {
            const bool isBlack = (code->data[y / module * code->width + x / module] & 1) != 0;
            frame.bytes[static_cast<std::size_t>(top + y) * width + static_cast<std::size_t>(left + x)] =
                isBlack ? 0 : 255;
        }
    }
    return frame;
}

} // namespace kivo::simulator
