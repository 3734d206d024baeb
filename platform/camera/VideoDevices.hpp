#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace kivo::platform {

/// The first of the kernel's video devices that gives pictures, by number. One that may not be opened counts too, so
/// that opening it says why.
std::optional<std::filesystem::path> firstVideoDevice(const std::filesystem::path& devices = "/dev");

/// How that device is read: in whichever form it gives, in a size that a code is read in quickly.
std::string cameraPipeline(const std::filesystem::path& device);

} // namespace kivo::platform
