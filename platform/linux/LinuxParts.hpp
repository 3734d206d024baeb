#pragma once

#include "platform/posix/PrivateFolder.hpp"

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ReachabilityService.hpp>
#include <kivo/platform/Workspace.hpp>
#include <kivo/platform/ui/Fonts.hpp>

#include <memory>

namespace kivo::platform {

// The services that Linux alone gives, each with the function that makes it.

/// Opens http and https addresses with the desktop's `xdg-open`, found in `PATH`. `vibrate()` does nothing.
std::shared_ptr<Workspace> makeDesktopWorkspace();

/// The fonts that fontconfig knows, read at first use. A name is the name of a family, or a font's full or PostScript
/// name.
///
/// `measure` estimates without looking into the fonts, so that a layout is the same on every machine.
std::shared_ptr<Fonts> makeFontconfigFonts();

/// Every target counts as reachable while the main routing table holds a usable default route. The kernel pushes
/// changes. A thread watches while any target has both a callback and a queue. Error numbers are those of errno.
///
/// A target's callback is called when the flags differ from the flags of its last call. Before the first call, they are
/// compared with the flags last read from the target or, if none were read, with the flags at the time when the target
/// got both callback and queue.
std::shared_ptr<ReachabilityService> makeNetlinkReachability();

/// `kivo/<bundle identifier>` below the desktop's data folder. For an application without an identifier, the name of
/// its executable takes the identifier's place.
DataFolder defaultDataFolder(const Bundle& mainBundle);

} // namespace kivo::platform
