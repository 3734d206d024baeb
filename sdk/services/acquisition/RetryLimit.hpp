#pragma once

#include <kivo/ActivationResponse.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <optional>

namespace kivo {

/// Whether the session limits the attempts and no attempt remains. If so, an alert over the screen tells the person,
/// with the host's texts.
bool refusesFurtherAttempt(platform::ViewController& screen);

/// Counts an attempt that has been made, and tells the session; does nothing where the session has no limit.
void countAttempt(const std::optional<ActivationResponse>& session);

} // namespace kivo
