#pragma once

#include <expected>
#include <map>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The texts of one .strings file, by key.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// Reads a .strings file, or says what is wrong with it in words that follow the file's name.
///
/// Understands `"key" = "value";` with comments and escapes, and a property list with a dictionary of texts; UTF-8,
/// or UTF-16 with a byte order mark. The last of several entries for one key counts.
std::expected<StringTable, std::string> readStringsFile(std::string_view bytes);

} // namespace kivo::platform
