#pragma once

#include <kivo/ActivationResponse.hpp>
#include <kivo/platform/ui/ViewController.hpp>

namespace kivo {

/// Whether the session limits the attempts and no attempt remains. If so, an alert over the screen tells the person,
/// with the host's texts.
bool refusesFurtherAttempt(platform::ViewController& screen);

/// Counts an attempt that has been made, and tells the session; does nothing without a session, and where the session
/// has no limit.
void countAttempt(const ActivationResponse* session);

} // namespace kivo
