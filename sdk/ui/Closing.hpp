#pragma once

#include <kivo/platform/ui/ViewController.hpp>

#include <functional>

/// The ways in which a screen closes. Main thread.
namespace kivo::ui {

/// Removes the screen from its navigation stack, or dismisses a screen without a stack. Screens over the screen stay.
/// `left` runs directly after a removal from the stack, otherwise after the dismissal. Returns false if the screen
/// stays, because it is alone in its stack or not presented by a screen; `left` runs all the same.
bool popOrDismiss(platform::ViewController& screen, std::function<void()> left = {}, bool animated = true);

/// Puts a close button at the right of the screen's navigation bar, which asks the person before the screen closes. The
/// bar has the colour "Kivo.PrimaryColor" and the button the image "close-icon", if the host's asset catalogue has
/// them.
void setUpCloseBarButton(platform::ViewController& screen);

/// Asks whether to leave, and removes the top screen on "OK". The host is not told.
void onCloseButtonAlertClick(platform::ViewController& screen);

} // namespace kivo::ui
