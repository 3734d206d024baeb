#pragma once

#include <filesystem>

namespace kivo::platform {

// Each platform defines these two functions.

/// The file of the running program; empty where the system does not tell, such as on Linux without /proc.
std::filesystem::path executableFile();

/// The file from which this code was loaded: the library, or the program that contains the library's objects.
std::filesystem::path libraryFile();

} // namespace kivo::platform
