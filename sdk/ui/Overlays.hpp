#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// Views over a screen: the activity overlay and alerts. Main thread.
namespace kivo::ui {

/// The tag of the activity overlay.
inline constexpr int activityOverlayTag = 999;

/// Covers the screen, or its navigation controller, with a grey veil and an activity indicator; at most one overlay at
/// a time. The overlay appears and disappears with the next turn of the main queue.
void showActivityOverlay(platform::ViewController& screen);

/// Fades the overlay out.
void hideActivityOverlay(platform::ViewController& screen);

/// Shows an alert over the screen, with a button for each of `actions`. `handler` runs once, with the index of the
/// chosen button.
void showAlert(platform::ViewController& screen, std::string title, std::string message,
               const std::vector<std::string>& actions, const std::function<void(std::size_t)>& handler);

} // namespace kivo::ui
