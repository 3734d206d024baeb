#pragma once

#include "PublicKey.hpp"

#include <expected>
#include <string>
#include <vector>

namespace pins {

/// The keys in a file, or of a server when there is no file of that name; or what is wrong with the source.
std::expected<std::vector<PublicKey>, std::string> keysOf(const std::string& source);

} // namespace pins
