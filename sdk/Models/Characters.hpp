#pragma once

#include <string_view>

namespace kivo::text {

/// Whether there is a letter, or a mark that belongs to one, of any script.
bool containsLetter(std::string_view text);

} // namespace kivo::text
