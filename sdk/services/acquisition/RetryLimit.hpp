#pragma once

#include <kivo/ActivationResponse.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <optional>

namespace kivo {

/// Whether the session has a limit of attempts and none is left; then an alert over the screen tells the person so, in
/// the host's words.
bool refusesFurtherAttempt(platform::ViewController& screen);

/// Counts an attempt that has been made and tells the session, where the session has a limit.
void countAttempt(const std::optional<ActivationResponse>& session);

} // namespace kivo
