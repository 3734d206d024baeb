#pragma once

#include <kivo/platform/ui/Window.hpp>

#include <string>
#include <vector>

namespace kivo::device {

/// The faults for which a person cannot see, hear, read or touch a part of the topmost screen, a sentence each: a view
/// without room, a view that is off the display and cannot be scrolled to, two views over one another, a text that does
/// not fit, a word that is broken between two lines, a text or a template image whose contrast to its ground is below
/// `leastContrast`, a button or field where a finger of 44 points touches the neighbour as well, a button or field that
/// assistive technology tells without a name, with the name of another one, or in another order than that of reading.
/// For tests of a host's own storyboard, at each of its reading sizes and in each of its appearances.
///
/// Lays the window out first. Measures with the fonts with which this library draws. Main thread.
KIVO_EXPORT std::vector<std::string> layoutFaults(platform::Window& window, double leastContrast = 3);

} // namespace kivo::device
