#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace kivo::ui {

/// The tag by which the overlay is found again.
inline constexpr int activityOverlayTag = 999;

/// Covers the screen, or the navigation controller it is in, with a grey veil and a turning wheel; one at a time. Main
/// thread; the overlay comes and goes with the next turn of the main queue.
void showActivityOverlay(platform::ViewController& screen);

/// Fades the overlay out.
void hideActivityOverlay(platform::ViewController& screen);

/// Asks a person over the screen, with one button for each of `actions`. `handler` hears the index of the chosen one,
/// once.
void showAlert(platform::ViewController& screen, std::string title, std::string message,
               const std::vector<std::string>& actions, const std::function<void(std::size_t)>& handler);

} // namespace kivo::ui
