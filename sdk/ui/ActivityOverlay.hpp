#pragma once

#include <kivo/platform/ui/ViewController.hpp>

namespace kivo::ui {

/// The tag by which the overlay is found again.
inline constexpr int activityOverlayTag = 999;

/// Covers the screen, or the navigation controller it is in, with a grey veil and a turning wheel; one at a time. Main
/// thread; the overlay comes and goes with the next turn of the main queue.
void showActivityOverlay(platform::ViewController& screen);

/// Fades the overlay out.
void hideActivityOverlay(platform::ViewController& screen);

} // namespace kivo::ui
