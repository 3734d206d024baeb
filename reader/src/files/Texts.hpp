#pragma once

#include <kivo/reader/Card.hpp>

#include <string>

namespace kivo::reader {

/// A text of a chip as a person reads it: "MUELLER<<ANNA<MARIA" is "MUELLER, ANNA MARIA". Control characters are left
/// out, a byte that is not UTF-8 becomes '?', and the text ends before byte 1024.
std::string partedText(ByteView text);

/// A date with its century in eight digits; the chip has the digits as letters, or two in a byte. Empty for anything
/// else.
std::string longDate(ByteView date);

} // namespace kivo::reader
