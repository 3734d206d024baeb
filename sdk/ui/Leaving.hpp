#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <functional>

namespace kivo::ui {

/// Takes the screen off its navigation stack or, when it is in none, dismisses it. What lies over the screen stays.
/// `left` runs at once after a pop, and when the dismissal is complete otherwise.
void popOrDismiss(platform::ViewController& screen, std::function<void()> left = {}, bool animated = true);

} // namespace kivo::ui
