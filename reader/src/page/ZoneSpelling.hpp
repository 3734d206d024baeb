#pragma once

#include "files/Zone.hpp"
#include "page/LetterCells.hpp"

#include <optional>
#include <string>
#include <vector>

namespace kivo::reader {

/// A line as recognition and shapes give it.
struct SeenLine {
    LetterCells cells{};
    /// A letter a cell, a space for none.
    std::string recognised{};
};

/// The zone that the lines spell: in each cell the letter that recognition and shape together make likeliest, of those
/// that may stand there. Where check digits disagree, the least certain letters are exchanged for their second
/// likeliest.
std::optional<Zone> spelledZone(const std::vector<SeenLine>& lines);

} // namespace kivo::reader
