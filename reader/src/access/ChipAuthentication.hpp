#pragma once

#include "access/SecurityInfos.hpp"
#include "messaging/Channel.hpp"

#include <expected>

namespace kivo::reader {

/// What came of chip authentication.
enum class ChipProof {
    /// The chip protects its answers with keys that only the holder of the secret key can derive.
    proven,
    /// The chip refuses, or protects its answers with other keys. The channel is broken afterwards.
    refuted,
    /// The infos offer nothing that is known here.
    notOffered,
};

/// Chip Authentication, version 1 (ICAO Doc 9303 part 11, 6.2), with the keys of DG14. The channel goes on with the
/// keys that were agreed on. Faults are those that say nothing about the chip: taken away, out of time, stopped.
std::expected<ChipProof, ChipFault> authenticateChip(Channel& channel, const SecurityInfos& infos,
                                                     const Randomness& randomness = fillRandomly);

} // namespace kivo::reader
