#pragma once

#include "page/Shades.hpp"

#include <array>
#include <string_view>

namespace kivo::reader {

/// The letters of a zone, in the order of the scores.
inline constexpr std::string_view zoneLetters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ<";

/// How far a place of a strip has the shape of each letter: 1 for the very shape, 0 for none.
using ShapeScores = std::array<double, zoneLetters.size()>;

/// The scores at the middle of a letter. `pitch` is the distance of two letters, `height` that for a letter as high as
/// it is drawn: both in pixels, and the same for a page that is seen from the front.
ShapeScores shapeScores(const Shades& strip, double middle, double pitch, double height);

} // namespace kivo::reader
