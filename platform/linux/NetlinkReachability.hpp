#pragma once

#include <kivo/platform/ReachabilityService.hpp>

#include <memory>

namespace kivo::platform {

/// Takes the network for reachable while a default route stands in the main routing table, whatever the target, and
/// has the kernel push changes. A thread watches while any target has both a callback and a queue. Error numbers are
/// those of errno.
///
/// A target is told of the difference to what it was last told, or else to the flags last read from it, or else to
/// the moment it got both callback and queue.
std::shared_ptr<ReachabilityService> makeNetlinkReachability();

} // namespace kivo::platform
