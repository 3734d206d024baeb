#pragma once

#include <kivo/platform/ui/Window.hpp>

#include <string>
#include <vector>

namespace kivo::device {

/// What a person could not see or read on the topmost screen, a sentence each: a view without room, or off the display
/// and out of reach of scrolling, two views over one another, a text that does not fit. For tests of a host's own
/// storyboard, at each of its reading sizes.
///
/// Lays the window out first. Judges by the fonts that this library draws with. Main thread.
KIVO_EXPORT std::vector<std::string> layoutFaults(platform::Window& window);

} // namespace kivo::device
