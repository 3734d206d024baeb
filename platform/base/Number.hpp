#pragma once

#include <optional>
#include <string_view>

namespace kivo::platform {

/// Reads all of `text` as a decimal number with a full stop, such as "-0.5" or "1e3"; absent for any other text and for
/// a number that is too large.
std::optional<double> decimalNumber(std::string_view text);

} // namespace kivo::platform
