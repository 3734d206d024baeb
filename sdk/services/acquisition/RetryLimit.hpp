#pragma once

#include <kivo/platform/ui/ViewController.hpp>

namespace kivo {

/// Whether the session has a limit of attempts and none is left; then an alert over the screen tells the person so, in
/// the host's words.
bool refusesFurtherAttempt(platform::ViewController& screen);

} // namespace kivo
