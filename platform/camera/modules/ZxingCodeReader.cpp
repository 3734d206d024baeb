#include "platform/camera/Modules.hpp"

#include <kivo/platform/Text.hpp>

#include <ZXing/BitMatrix.h>
#include <ZXing/MultiFormatWriter.h>
#include <ZXing/ReadBarcode.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <utility>

namespace kivo::platform {
namespace {

using ZXing::BarcodeFormat;
using Kind = std::pair<MetadataObjectType, BarcodeFormat>;

constexpr std::array kinds{
    Kind{MetadataObjectType::qr, BarcodeFormat::QRCode}, Kind{MetadataObjectType::ean8, BarcodeFormat::EAN8},
    Kind{MetadataObjectType::ean13, BarcodeFormat::EAN13}, Kind{MetadataObjectType::pdf417, BarcodeFormat::PDF417}};

ZXing::BarcodeFormats formatsOf(const std::vector<MetadataObjectType>& types) {
    ZXing::BarcodeFormats formats;
    for (const auto& [type, format] : kinds) {
        if (std::ranges::find(types, type) != types.end()) {
            formats |= format;
        }
    }
    return formats;
}

ZXing::ImageView viewOf(const VideoFrame& frame) {
    // Both other formats begin with the plane of brightness.
    const auto format = frame.format == VideoFrame::Format::rgb ? ZXing::ImageFormat::RGB : ZXing::ImageFormat::Lum;
    return {frame.bytes.data(), frame.width, frame.height, format};
}

std::string textOf(const ZXing::Result& result) {
    const auto& bytes = result.bytes();
    std::string plain{bytes.begin(), bytes.end()};
    // The library guesses an unknown character set, and cuts a text off at the first malformed byte. Both would turn a
    // broken payload into a sound one.
    return result.hasECI() && !text::isUtf8(plain) ? result.text() : plain;
}

double distance(const ZXing::Result& result, const VideoFrame& frame) {
    const auto middle = ZXing::Center(result.position());
    return std::hypot(middle.x - frame.width / 2.0, middle.y - frame.height / 2.0);
}

class ZxingCodeReader final : public CodeReader {
public:
    std::vector<MetadataObject> read(const VideoFrame& frame, const std::vector<MetadataObjectType>& types) override {
        try {
            const auto hints = ZXing::DecodeHints{}.setFormats(formatsOf(types));
            // Screens in dark mode show codes in white on black, which the library does not look for. Only every fourth
            // picture without a code is read as a negative, so that reading stays fast.
            const bool isNegative = picturesWithout_ % negativeEvery == negativeEvery - 1;
            auto results = ZXing::ReadBarcodes(viewOf(isNegative ? negativeOf(frame) : frame), hints);
            picturesWithout_ = results.empty() ? picturesWithout_ + 1 : 0;
            std::ranges::sort(results, {}, [&](const auto& result) { return distance(result, frame); });
            return objectsOf(results);
        } catch (const std::exception&) {
            // A picture that cannot be read, for want of memory or otherwise, counts as a picture without a code.
            return {};
        }
    }

private:
    static std::vector<MetadataObject> objectsOf(const ZXing::Results& results) {
        std::vector<MetadataObject> objects;
        for (const auto& result : results) {
            const auto kind = std::ranges::find(kinds, result.format(), &Kind::second);
            if (result.isValid() && kind != kinds.end()) {
                objects.push_back({.type = kind->first, .text = textOf(result)});
            }
        }
        return objects;
    }

    const VideoFrame& negativeOf(const VideoFrame& frame) {
        negative_ = frame;
        for (auto& byte : negative_.bytes) {
            byte = static_cast<std::uint8_t>(255 - byte);
        }
        return negative_;
    }

    static constexpr unsigned negativeEvery = 4;

    unsigned picturesWithout_ = 0;
    VideoFrame negative_;
};

/// Makes the library build its tables now. The library builds them at first use, and all of them for these two kinds.
void makeTables() {
    ZxingCodeReader reader;
    for (const auto type : {MetadataObjectType::qr, MetadataObjectType::pdf417}) {
        const auto format = std::ranges::find(kinds, type, &Kind::first)->second;
        const auto drawn = ZXing::MultiFormatWriter{format}.encode("0", 300, 300);
        const auto code = ZXing::ToMatrix<std::uint8_t>(drawn, 0, 255);
        const VideoFrame frame{.width = code.width(),
                               .height = code.height(),
                               .format = VideoFrame::Format::gray,
                               .bytes = {code.begin(), code.end()}};
        reader.read(frame, {type});
    }
}

std::shared_ptr<CodeReader> makeReader() {
    [[maybe_unused]] static const bool made = (makeTables(), true);
    return std::make_shared<ZxingCodeReader>();
}

} // namespace
} // namespace kivo::platform

extern "C" KIVO_EXPORT const kivo::platform::CodesModule kivoCodes;
const kivo::platform::CodesModule kivoCodes{.version = KIVO_SDK_VERSION, .makeReader = kivo::platform::makeReader};
