#pragma once

#include <kivo/Export.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::text {

// Characters are counted as a person counts them: a flag or an accented letter is one character. A byte that is no
// UTF-8 counts as one character.

/// Whether the bytes are well-formed UTF-8.
KIVO_EXPORT bool isUtf8(std::string_view bytes);

/// The first `count` characters; absent when the text has fewer.
KIVO_EXPORT std::optional<std::string_view> firstCharacters(std::string_view text, std::size_t count);

KIVO_EXPORT std::size_t characterCount(std::string_view text);

/// The characters, in order. The views point into `text`.
KIVO_EXPORT std::vector<std::string_view> characters(std::string_view text);

/// `text` as a field of one line takes it when it is pasted: without line ends and without blanks around the rest.
KIVO_EXPORT std::string singleLine(std::string_view text);

} // namespace kivo::text
