#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kivo::json {

/// The part of a text up to the first quote, backslash or control character: all of them stand for themselves in JSON.
struct PlainPart {
    std::size_t length = 0;
    /// Whether no byte of the part belongs to a longer sequence of UTF-8.
    bool isAscii = true;
};

/// The plain part at the beginning of `text`.
PlainPart plainPart(std::string_view text);

/// Puts a character of Unicode at the end of `to`, as UTF-8. No half of a surrogate pair.
void appendCharacter(std::string& to, std::uint32_t character);

} // namespace kivo::json
