#pragma once

#include "page/LetterShapes.hpp"
#include "page/Shades.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::reader {

/// Where the letters of a line stand. All letters of a zone are equally far apart, seen from the front.
struct LetterCells {
    /// The middles of the letters, in pixels from the left, and the distance of each to its neighbours: more on the
    /// side that is nearer to the camera.
    std::vector<double> middles{};
    std::vector<double> pitches{};
    /// How well the cells fit the line: the ink in the cells without the ink between them, 1 at best.
    double fit = 0;
    /// What each cell looks like.
    std::vector<ShapeScores> scores{};
};

/// The strip with its ground white and its letters black, whatever the light and the pattern of the paper.
Shades evened(const Shades& strip);

/// The strip with the edges of its letters enhanced, for a picture that is blurred.
Shades sharpened(const Shades& strip);

/// Lays so many cells over a strip of `possibleZones` that was evened. Leaves the scores out.
LetterCells cellsOf(const Shades& strip, std::size_t count);

/// Looks at what stands in the cells of the strip, in place of what was seen before.
void scoreCells(LetterCells& cells, const Shades& strip);

/// What was recognised in the line, with each letter in the cell that it comes from, by the looks of the cells:
/// recognition counts fillers wrongly, leaves letters out, and sees some that are not there. A space where no letter
/// was recognised.
std::string placed(std::string_view recognised, const LetterCells& cells);

} // namespace kivo::reader
