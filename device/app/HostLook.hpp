#pragma once

#include "Host.hpp"

#include <kivo/ThemeCustomization.hpp>

#include <memory>
#include <utility>
#include <vector>

namespace kivo::device::app {

/// A theme that a host might have.
struct ThemePreset {
    const char* name;
    std::shared_ptr<ThemeCustomization> (*make)();
};

const std::vector<ThemePreset>& themePresets();

/// The languages of the SDK's texts, as names and in their own words; the first is the desktop's, without a name.
inline constexpr std::pair<const char*, const char*> languages[] = {
    {"", "The desktop's"}, {"en", "English"}, {"de", "Deutsch"}, {"fr", "Français"},
    {"es", "Español"},     {"pl", "Polski"},  {"ar", "العربية"}, {"ja", "日本語"},
};

/// The colours of the host's own screen, light and dark. The tint is the colour that the SDK's screens give the
/// navigation bar.
HostColors hostColors();

} // namespace kivo::device::app
