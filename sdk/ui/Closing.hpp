#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <functional>

namespace kivo::ui {

/// Takes the screen off its navigation stack or, when it is in none, dismisses it. What lies over the screen stays.
/// `left` runs at once after a pop, and when the dismissal is complete otherwise. False where the screen stays, alone
/// in its stack or presented by no screen; `left` runs all the same.
bool popOrDismiss(platform::ViewController& screen, std::function<void()> left = {}, bool animated = true);

/// Puts a close button at the right of the screen's navigation bar; it asks before it closes. The bar takes the colour
/// "Kivo.PrimaryColor" and the button the image "close-icon", each where the host's asset catalogue has it.
void setUpCloseBarButton(platform::ViewController& screen);

/// Asks whether to leave, and takes the top screen away on "OK". Nothing else is reported.
void onCloseButtonAlertClick(platform::ViewController& screen);

} // namespace kivo::ui
