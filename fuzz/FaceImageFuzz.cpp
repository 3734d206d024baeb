#include "FuzzInput.hpp"
#include "files/FaceImage.hpp"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto frame = kivo::reader::decodedImage({data, size})) {
        kivo::fuzz::require(frame->isWhole() && frame->format == kivo::platform::VideoFrame::Format::rgb &&
                            frame->width <= kivo::reader::largestFaceSide &&
                            frame->height <= kivo::reader::largestFaceSide);
    }
    return 0;
}
