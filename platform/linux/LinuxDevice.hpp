#pragma once

#include "platform/posix/PrivateFolder.hpp"

#include <kivo/platform/Device.hpp>
#include <kivo/platform/Diagnostics.hpp>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

/// Gives network interfaces the phone's names, by their kind and in the order of the calls.
///
/// Wi-Fi is en0, mobile broadband pdp_ip0 to pdp_ip3 and wired Ethernet en2 to en4; loopback, virtual and surplus
/// interfaces keep their names.
class InterfaceNames {
public:
    /// `classFolder` is the folder in which the kernel describes its interfaces.
    explicit InterfaceNames(std::filesystem::path classFolder = "/sys/class/net");

    std::string phoneName(const std::string& interfaceName);

private:
    std::string newName(const std::string& interfaceName);

    std::filesystem::path classFolder_;
    std::map<std::string, std::string> given_;
    int cellular_ = 0;
    int wired_ = 0;
};

/// Describes this machine. The device identifier is a random UUID that the first `identifierForVendor()` stores in
/// `<dataFolder>/device-id`; all processes that share the folder get the same identifier. A damaged file is kept as
/// `device-id.damaged` and replaced. While the folder cannot be used, there is no identifier, and `diagnostics` gets a
/// report.
std::shared_ptr<Device> makeLinuxDevice(DataFolder dataFolder, std::shared_ptr<Diagnostics> diagnostics);

/// `VERSION_ID` of an os-release text without its quotes; empty when there is none.
std::string versionOfRelease(std::string_view osRelease);

} // namespace kivo::platform
