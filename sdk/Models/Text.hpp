#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace kivo::text {

/// Whether the bytes are well-formed UTF-8.
bool isUtf8(std::string_view bytes);

/// The first `count` characters as a person counts them (a flag or an accented letter is one); absent when there
/// are fewer. Bytes that are no UTF-8 count as one character each.
std::optional<std::string_view> firstCharacters(std::string_view text, std::size_t count);

} // namespace kivo::text
