#pragma once

#include <kivo/reader/Card.hpp>

#include <cstddef>

namespace kivo::reader {

/// How long the messages of a card may be.
struct Capabilities {
    /// Whether commands and answers may have lengths of three bytes.
    bool takesLongMessages = false;
    /// The longest command and the longest answer, in bytes, lengths and status left out.
    std::size_t longestCommand = 255;
    std::size_t longestAnswer = 256;
};

/// The historical bytes of an answer to reset (ISO 7816-3, 8.2); empty where the answer is cut off.
Bytes historicalBytesOf(ByteView answerToReset);

/// What the historical bytes of the answer to reset tell (ISO 7816-4, 8.1.1): whether messages may be long.
Capabilities capabilitiesIn(ByteView historicalBytes);

/// The same together with what the file EF.ATR/INFO tells: how long. What the file does not tell stays as it is.
Capabilities capabilitiesWith(Capabilities known, ByteView atrInfo);

} // namespace kivo::reader
