#pragma once

#include "NetworkManager/PublicKeyPins.hpp"

#include <expected>
#include <filesystem>
#include <string>
#include <vector>

namespace pins {

/// The list in a file, with its faults. The error is a sentence about a file that cannot be read as a property list.
std::expected<kivo::PinList, std::string> readList(const std::filesystem::path& file);

/// Replaces the file's content by a list, in one step. Returns an error as a sentence, or an empty text.
std::string writeList(const std::filesystem::path& file, const std::vector<std::string>& pins);

} // namespace pins
