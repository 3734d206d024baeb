#pragma once

#include <kivo/platform/Diagnostics.hpp>

#include <memory>

namespace kivo::platform {

/// What the platform's own services report to: passes on to the installed diagnostics, and to standard error until
/// some are installed. A service made early is so heard by diagnostics that are installed late.
std::shared_ptr<Diagnostics> relayedDiagnostics();

/// Writes to standard error.
std::shared_ptr<Diagnostics> standardErrorDiagnostics();

/// Has the relay pass on to `diagnostics` from now on.
void relayTo(std::shared_ptr<Diagnostics> diagnostics);

} // namespace kivo::platform
