#pragma once

#include "page/Shades.hpp"

#include <vector>

namespace kivo::reader {

/// The lines of what may be a zone, from the top, each cut out and upright: dark letters on light ground, 32 pixels
/// high, with half as much ground above and below.
using LineStrips = std::vector<Shades>;

/// The part of a picture from whose letters the turn of a page is taken. Lines of a page that is seen from the side are
/// turned differently.
enum class PartOfPage { whole, lower, upper };

/// Looks for two or three long lines of text, equally long and one below the other, turned by at most 17 degrees. The
/// most likely place comes first; at most three.
std::vector<LineStrips> possibleZones(const Shades& picture, PartOfPage part);

} // namespace kivo::reader
