#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

#include <string_view>

namespace kivo {

/// The environments of the identity service; each has its own join page (see `Deployment`).
enum class SDKEnv { PROD = 0, PREPROD = 1, TEST = 2, DEV = 3 };

template <>
struct RawValues<SDKEnv> {
    static constexpr int first = 0;
    static constexpr int last = 3;
};

/// Names environments.
struct KIVO_EXPORT SDKEnvHelper {
    /// "PROD", "PREPROD", "TEST" or "DEV", as sent in "target-env"; empty for any other integer.
    static std::string_view environmentName(SDKEnv from);
};

} // namespace kivo
