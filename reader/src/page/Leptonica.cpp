#include "page/Leptonica.hpp"

namespace kivo::reader {

PixPointer pixOf(const Shades& shades) {
    PixPointer pix{pixCreate(shades.width, shades.height, 8)};
    if (pix) {
        const auto stride = static_cast<std::size_t>(pixGetWpl(pix.get()));
        for (int y = 0; y < shades.height; ++y) {
            auto* const row = pixGetData(pix.get()) + static_cast<std::size_t>(y) * stride;
            for (int x = 0; x < shades.width; ++x) {
                SET_DATA_BYTE(row, x, shades.at(x, y));
            }
        }
    }
    return pix;
}

Shades shadesOf(Pix* pix) {
    Shades shades{.width = pixGetWidth(pix), .height = pixGetHeight(pix)};
    const auto stride = static_cast<std::size_t>(pixGetWpl(pix));
    shades.bytes.reserve(static_cast<std::size_t>(shades.width) * static_cast<std::size_t>(shades.height));
    for (int y = 0; y < shades.height; ++y) {
        const auto* const row = pixGetData(pix) + static_cast<std::size_t>(y) * stride;
        for (int x = 0; x < shades.width; ++x) {
            shades.bytes.push_back(static_cast<std::uint8_t>(GET_DATA_BYTE(row, x)));
        }
    }
    return shades;
}

} // namespace kivo::reader
