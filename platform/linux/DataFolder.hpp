#pragma once

#include <kivo/platform/Bundle.hpp>

#include <filesystem>

namespace kivo::platform {

/// Where an application's secrets are kept: `kivo/<bundle identifier>` below the desktop's data folder. An
/// application without an identifier is told from others by the name of its executable.
std::filesystem::path defaultDataFolder(const Bundle& mainBundle);

} // namespace kivo::platform
