#pragma once

#include <kivo/platform/Services.hpp>

#include <memory>

namespace kivo {

/// The bundle with the SDK's own resources; null when the bundle is not installed.
inline std::shared_ptr<platform::Bundle> sdkBundle() {
    return platform::services().bundles->withIdentifier("com.test.ZORFramework");
}

} // namespace kivo
