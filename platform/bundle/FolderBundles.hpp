#pragma once

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/Diagnostics.hpp>

#include <filesystem>
#include <memory>

namespace kivo::platform {

/// Bundles that are folders: `Info.plist` and the resources, and `<language>.lproj` folders with translated ones.
///
/// The language is that of `LC_ALL`, `LC_MESSAGES` or `LANG` at the time of this call; then the bundle's
/// `CFBundleDevelopmentRegion`, then en, then Base. An empty `mainBundle` stands for `<executable>.bundle` beside the
/// executable, an empty `sdkBundle` for the `ZORFramework.bundle` installed or built with the library. A missing main
/// bundle is an empty one; everything that cannot be read is left out and told to `diagnostics` once.
std::shared_ptr<Bundles> makeFolderBundles(std::filesystem::path mainBundle, std::filesystem::path sdkBundle,
                                           std::shared_ptr<Diagnostics> diagnostics);

} // namespace kivo::platform
