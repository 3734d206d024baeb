#pragma once

#include "Options.hpp"

namespace simulation {

/// Walks a session of another service, and prints a line for each breach of the protocol. Returns the program's status.
int checkService(const Options& options);

} // namespace simulation
