#pragma once

#include "platform/posix/DataFolder.hpp"

#include <kivo/platform/Bundle.hpp>

namespace kivo::platform {

/// `kivo/<bundle identifier>` below the desktop's data folder. An application without an identifier is told from
/// others by the name of its executable.
DataFolder defaultDataFolder(const Bundle& mainBundle);

} // namespace kivo::platform
