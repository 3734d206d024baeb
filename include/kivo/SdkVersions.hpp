#pragma once

#include <kivo/Export.hpp>

#include <string>
#include <string_view>

namespace kivo {

/// The rule by which a version text selects an interface version.
struct KIVO_EXPORT SdkVersions {
    /// The first two characters of `version`, or "Invalid sdk version!" when it has fewer. Nothing is validated.
    static std::string getPreciseVersion(std::string_view fromVersion);
};

} // namespace kivo
