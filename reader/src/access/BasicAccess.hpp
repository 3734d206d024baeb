#pragma once

#include "access/Password.hpp"
#include "messaging/Channel.hpp"

#include <expected>

namespace kivo::reader {

/// Basic Access Control (ICAO Doc 9303 part 11, 4.3), after the application has been selected. The channel is protected
/// afterwards.
std::expected<void, ChipFault> openByBasicAccess(Channel& channel, const Password& password,
                                                 const Randomness& randomness = fillRandomly);

} // namespace kivo::reader
