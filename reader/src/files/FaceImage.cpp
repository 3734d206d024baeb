#include "files/FaceImage.hpp"

#include "files/DataGroups.hpp"
#include "files/Jpeg2000.hpp"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <memory>

namespace kivo::reader {
namespace {

struct JpegFree {
    void operator()(void* decoder) const { tjDestroy(decoder); }
};

bool isJpeg(ByteView image) {
    constexpr std::array<std::uint8_t, 3> start{0xFF, 0xD8, 0xFF};
    return image.size() > start.size() && std::ranges::equal(image.first(start.size()), start);
}

std::optional<platform::VideoFrame> decodedJpeg(ByteView image) {
    const std::unique_ptr<void, JpegFree> decoder{tjInitDecompress()};
    const auto size = static_cast<unsigned long>(image.size());
    platform::VideoFrame frame{.format = platform::VideoFrame::Format::rgb, .bytes = {}};
    int subsampling = 0;
    int colours = 0;
    if (!decoder ||
        tjDecompressHeader3(decoder.get(), image.data(), size, &frame.width, &frame.height, &subsampling, &colours) !=
            0 ||
        !isWithinFaceBounds(frame.width, frame.height)) {
        return std::nullopt;
    }
    frame.bytes.resize(static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height) * 3);
    // A picture of many small scans would take minutes. A picture that is cut off is refused.
    constexpr int flags = TJFLAG_LIMITSCANS | TJFLAG_STOPONWARNING | TJFLAG_ACCURATEDCT;
    if (tjDecompress2(decoder.get(), image.data(), size, frame.bytes.data(), frame.width, 0, frame.height, TJPF_RGB,
                      flags) != 0) {
        return std::nullopt;
    }
    return frame;
}

} // namespace

bool isWithinFaceBounds(long long width, long long height) {
    return width > 0 && height > 0 && width <= largestFaceSide && height <= largestFaceSide &&
           width * height <= mostFacePixels;
}

std::optional<platform::VideoFrame> decodedImage(ByteView image) {
    if (image.size() > largestFaceBytes) {
        return std::nullopt;
    }
    return isJpeg(image) ? decodedJpeg(image) : decodedJpeg2000(image);
}

std::optional<platform::VideoFrame> decodedFace(ByteView dg2) {
    const auto face = faceOf(dg2);
    return face ? decodedImage(face->image) : std::nullopt;
}

} // namespace kivo::reader
