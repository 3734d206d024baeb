#pragma once

#include "Options.hpp"

namespace simulation {

/// Serves sessions, the page and the control interface until a signal comes. Returns the program's status. Throws
/// `std::runtime_error` with a sentence when it cannot.
int serve(const Options& options);

} // namespace simulation
