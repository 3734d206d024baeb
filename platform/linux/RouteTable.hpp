#pragma once

#include <expected>

namespace kivo::platform {

/// Whether the main routing table holds an IPv4 or IPv6 default route that leads through an interface that is up;
/// an error number when the kernel does not tell.
std::expected<bool, int> defaultRouteStands();

} // namespace kivo::platform
