#pragma once

#include <kivo/reader/Card.hpp>

#include <string>

namespace kivo::reader {

/// An object identifier in its dotted form, such as "2.23.136.1.1.1", from the value of its data object. Empty where a
/// number is cut off or beyond 32 bits, or where there are more than 32 numbers.
std::string dottedIdentifier(ByteView value);

} // namespace kivo::reader
