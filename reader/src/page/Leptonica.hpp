#pragma once

#include "page/Shades.hpp"

#include <leptonica/allheaders.h>

#include <memory>

namespace kivo::reader {

struct PixFree {
    void operator()(Pix* pix) const { pixDestroy(&pix); }
};

struct BoxFree {
    void operator()(Box* box) const { boxDestroy(&box); }
};

struct BoxesFree {
    void operator()(Boxa* boxes) const { boxaDestroy(&boxes); }
};

/// Pictures and boxes of the image library.
using PixPointer = std::unique_ptr<Pix, PixFree>;
using Boxes = std::unique_ptr<Boxa, BoxesFree>;

/// A copy, 8 bits a pixel; null where memory is short.
PixPointer pixOf(const Shades& shades);
Shades shadesOf(Pix* pix);

} // namespace kivo::reader
