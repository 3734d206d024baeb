#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kivo::platform {

// Each platform defines these two functions.

/// The kernel's video device with the lowest number that gives pictures. A device without permission counts too: the
/// attempt to open it tells the reason.
std::optional<std::filesystem::path> firstVideoDevice(const std::filesystem::path& devices = "/dev");

/// The pipeline that reads a device, in any form that the device gives and in a size in which codes are read quickly.
std::string cameraPipeline(const std::filesystem::path& device);

} // namespace kivo::platform
