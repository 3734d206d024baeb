#pragma once

#include <kivo/platform/Workspace.hpp>

#include <memory>

namespace kivo::platform {

/// Opens http and https addresses with the desktop's `xdg-open`, found in `PATH`; has nothing to vibrate.
std::shared_ptr<Workspace> makeDesktopWorkspace();

} // namespace kivo::platform
