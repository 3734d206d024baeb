#pragma once

#include <kivo/platform/ReachabilityService.hpp>

#include <memory>

namespace kivo::c {

/// A network that can always be reached.
std::shared_ptr<platform::ReachabilityService> assumedNetwork();

} // namespace kivo::c
