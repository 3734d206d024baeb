#pragma once

#include "platform/posix/PrivateFolder.hpp"

#include <optional>
#include <string>

namespace kivo::platform {

/// An identifier, a problem to report to the person who runs the host, or both.
struct DeviceIdentifier {
    std::optional<std::string> identifier;
    std::string problem;
};

/// The UUID in the file `device-id`; the first call makes the file. Waits at most five seconds for other processes that
/// do the same.
DeviceIdentifier readOrCreateDeviceIdentifier(const DataFolder& where);

} // namespace kivo::platform
