#pragma once

#include "reading/ChipReading.hpp"

#include <stop_token>

namespace kivo::reader {

/// The work of a reading, on the calling thread: waits for a card, opens the chip, reads its files and has it prove
/// itself. Throws nothing.
std::expected<ChipDocument, ChipFailure> documentRead(CardSource& source, const ChipReadingOrder& order,
                                                      std::stop_token stop, const ChipReading::Progress& progress);

} // namespace kivo::reader
