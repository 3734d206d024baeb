#pragma once

#include "PlatformCheck.hpp"

namespace kivo::check {

/// The services of the platform that this program was built for. The only place that names them.
ServicesUnderTest builtPlatform();

} // namespace kivo::check
