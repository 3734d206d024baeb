#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace kivo::device::pictures {

/// Compares the pictures (PNG, animated or not) of two folders. Returns a sentence for each picture that is in one
/// folder only, cannot be read, or differs by more than what two machines with the same fonts make of the same drawing.
std::vector<std::string> differences(const std::filesystem::path& committed, const std::filesystem::path& drawn);

} // namespace kivo::device::pictures
