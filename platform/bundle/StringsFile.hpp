#pragma once

#include <expected>
#include <map>
#include <string>
#include <string_view>

namespace kivo::platform {

/// The texts of one .strings file, by key.
using StringTable = std::map<std::string, std::string, std::less<>>;

/// Reads a .strings file. The error follows the file's name in a sentence.
///
/// The file holds entries `"key" = "value";` with comments and escapes, or is a property list with a dictionary of
/// texts. It is UTF-8, or UTF-16 with a byte order mark. The last of several entries for one key counts.
std::expected<StringTable, std::string> readStringsFile(std::string_view bytes);

} // namespace kivo::platform
