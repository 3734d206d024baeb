#pragma once

#include <filesystem>

namespace kivo::platform {

/// The program that runs; empty where the system does not say, as without /proc.
std::filesystem::path executable();

/// The file this code was loaded from: the library, or the program that contains its objects.
std::filesystem::path ownFile();

} // namespace kivo::platform
