#pragma once

#include "passport/TravelFiles.hpp"

namespace kivo::simulator::chip {

/// Fills in what the configuration leaves to the simulator: zone and authority. Throws `std::runtime_error` for a
/// document that cannot be.
void complete(PassportConfiguration& configuration);

/// The keys of a chip with this configuration.
ChipKeyRing makeKeys(const PassportConfiguration& configuration);

/// Everything in the chip: files, signed anew, and keys; with the fault of the configuration.
std::shared_ptr<const ChipContents> issuedContents(const PassportConfiguration& configuration, const ChipKeyRing& keys);

} // namespace kivo::simulator::chip
