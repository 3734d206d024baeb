#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <functional>

namespace kivo::ui {

/// Takes the screen off its navigation stack or, when it is in none, dismisses it. What lies over the screen stays.
/// `left` runs at once after a pop, and when the dismissal is complete otherwise. False where the screen stays, alone
/// in its stack or presented by no screen; `left` runs all the same.
bool popOrDismiss(platform::ViewController& screen, std::function<void()> left = {}, bool animated = true);

} // namespace kivo::ui
