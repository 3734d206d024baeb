#pragma once

#include <filesystem>
#include <string>

namespace kivo::platform {

// A path as messages name it.
inline std::string quoted(const std::filesystem::path& path) {
    return std::string{"\""}.append(path.string()).append("\"");
}

} // namespace kivo::platform
