#include "FuzzInput.hpp"
#include "PictureStream.hpp"

#include <algorithm>

/// A stream tells the same in one piece, in pieces of one size, and byte by byte. The first byte of the input is the
/// size.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || data[0] == 0) {
        return 0;
    }
    const std::span bytes{data + 1, size - 1};
    for (const bool isJpeg : {true, false}) {
        const auto told = [&](std::size_t piece) {
            std::vector<std::uint32_t> sides;
            kivo::platform::PictureStream stream{
                isJpeg, [&](std::uint32_t width, std::uint32_t height) { sides.insert(sides.end(), {width, height}); }};
            for (auto rest = bytes; !rest.empty(); rest = rest.subspan(std::min(piece, rest.size()))) {
                stream.read(rest.first(std::min(piece, rest.size())));
            }
            return std::pair{sides, stream.isWithinFirstPicture()};
        };
        kivo::fuzz::require(told(bytes.size()) == told(data[0]) && told(data[0]) == told(1));
    }
    return 0;
}
