#pragma once

#include <kivo/platform/ui/ViewController.hpp>

namespace kivo::ui {

/// Puts a close button at the right of the screen's navigation bar; it asks before it closes. The bar takes the colour
/// "Kivo.PrimaryColor" and the button the image "close-icon", each where the host's asset catalogue has it.
void setUpCloseBarButton(platform::ViewController& screen);

/// Asks whether to leave, and takes the top screen away on "OK". Nothing else is reported.
void onCloseButtonAlertClick(platform::ViewController& screen);

} // namespace kivo::ui
