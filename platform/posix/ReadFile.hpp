#pragma once

#include <cstddef>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>

namespace kivo::platform {

/// What a file of texts, settings or layouts may hold.
inline constexpr std::size_t largestFile = std::size_t{4} << 20;

/// The bytes of a regular file, nothing when there is none of that name, or why the file cannot be read: the end of a
/// sentence that begins with its name. Never waits, whatever kind of file the name belongs to.
std::expected<std::optional<std::string>, std::string> readFile(const std::filesystem::path& path);

} // namespace kivo::platform
