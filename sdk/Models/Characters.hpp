#pragma once

#include "Models/Text.hpp"

#include <cstddef>
#include <string_view>

namespace kivo::text {

/// Whether a person counts exactly `count` characters in the text.
inline bool hasCharacters(std::string_view text, std::size_t count) {
    return firstCharacters(text, count) == text;
}

/// Whether there is a letter, or a mark that belongs to one, of any script.
bool containsLetter(std::string_view text);

} // namespace kivo::text
