#pragma once

#include "platform/posix/DataFolder.hpp"

#include <optional>
#include <string>

namespace kivo::platform {

/// An identifier, a problem to tell the person who runs the host, or both.
struct DeviceIdentifier {
    std::optional<std::string> identifier;
    std::string problem;
};

/// The UUID kept in the file `device-id`, made when there is none yet. Other processes may do the same; waits for them
/// at most five seconds.
DeviceIdentifier readOrCreateDeviceIdentifier(const DataFolder& where);

} // namespace kivo::platform
