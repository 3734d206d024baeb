#pragma once

#include "platform/posix/DataFolder.hpp"

#include <kivo/platform/Device.hpp>
#include <kivo/platform/Diagnostics.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

/// Describes this machine. The device identifier is a random UUID that the first call for it stores in
/// `<dataFolder>/device-id`; all processes that share the folder get the same one. A damaged file is kept as
/// `device-id.damaged` and replaced. There is no identifier while the folder cannot be used; `diagnostics` hears of it.
std::shared_ptr<Device> makeLinuxDevice(DataFolder dataFolder, std::shared_ptr<Diagnostics> diagnostics);

/// `VERSION_ID` of an os-release text without its quotes; empty when there is none.
std::string versionOfRelease(std::string_view osRelease);

} // namespace kivo::platform
