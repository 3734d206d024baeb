#pragma once

#include <kivo/Export.hpp>

#include <span>
#include <string>
#include <string_view>

namespace kivo {

/// The interface versions, and the rule by which a version text selects one of them.
struct KIVO_EXPORT SdkVersions {
    /// The interface versions that `KivoSDK::load` takes, each as its two characters, oldest first. Callable from any
    /// thread.
    static std::span<const std::string_view> all();

    /// The first two characters of `fromVersion`, or "Invalid sdk version!" for a shorter text. No other check is made.
    static std::string getPreciseVersion(std::string_view fromVersion);
};

} // namespace kivo
