#pragma once

#include "NetworkManager/PublicKeyPins.hpp"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace pins {

/// The list in a file, with its faults; or why there is no list to speak of.
std::expected<kivo::PinList, std::string> readList(const std::filesystem::path& file);

/// Puts a list in the place of the file's content, at once or not at all. Gives what went wrong, or nothing.
std::string writeList(const std::filesystem::path& file, const std::vector<std::string>& pins);

} // namespace pins
