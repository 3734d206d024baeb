#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <functional>

namespace kivo::ui {

/// Takes the screen off its navigation stack or, when it is in none, dismisses it. `left` runs at once after a pop, and
/// when the dismissal is complete otherwise.
void popOrDismiss(platform::ViewController& screen, std::function<void()> left = {});

/// Whether the screen is off its navigation stack already, while it can still ask where it was.
bool isLeavingStack(platform::ViewController& screen);

} // namespace kivo::ui
