#pragma once

#include "Host.hpp"

#include <kivo/ThemeCustomization.hpp>

#include <memory>
#include <vector>

namespace kivo::device::app {

/// A theme that a host might have.
struct ThemePreset {
    const char* name;
    std::shared_ptr<ThemeCustomization> (*make)();
};

const std::vector<ThemePreset>& themePresets();

/// The colours of the host's own screen, light and dark. The tint is the colour that the SDK's screens give the
/// navigation bar.
HostColors hostColors();

} // namespace kivo::device::app
