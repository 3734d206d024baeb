#pragma once

#include <filesystem>
#include <string_view>

namespace kivo::platform {

/// Makes a file of mode 0600 that has its whole content from the first moment under its name, and keeps it through a
/// power cut. Returns an error number, 0 for success; EEXIST when there is a file of this name, which stays as it is.
int createWholeFile(const std::filesystem::path& file, std::string_view content);

} // namespace kivo::platform
