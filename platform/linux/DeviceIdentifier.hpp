#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kivo::platform {

/// An identifier, a problem to tell the person who runs the host, or both.
struct DeviceIdentifier {
    std::optional<std::string> identifier;
    std::string problem;
};

/// The UUID kept in `<folder>/device-id`, made when there is none yet. Safe against other processes doing the same.
DeviceIdentifier readOrCreateDeviceIdentifier(const std::filesystem::path& folder);

} // namespace kivo::platform
