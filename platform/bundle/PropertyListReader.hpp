#pragma once

#include <kivo/platform/Bundle.hpp>

#include <expected>
#include <string>
#include <string_view>

namespace kivo::platform {

/// Reads a property list, XML or binary, or says what is wrong with it in words that follow a file's name.
///
/// A date comes as text such as 2026-01-31T08:15:00Z; what `PropertyValue` has no type for is left out.
std::expected<PropertyValue, std::string> readPropertyList(std::string_view bytes);

} // namespace kivo::platform
