#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace kivo::platform {

/// Names network interfaces as the phone does, by their kind and in the order in which they are asked for.
///
/// Wi-Fi is en0, mobile broadband pdp_ip0 to pdp_ip3 and wired Ethernet en2 to en4; loopback, virtual and surplus
/// interfaces keep their names.
class InterfaceNames {
public:
    /// `classFolder` is where the kernel describes its interfaces.
    explicit InterfaceNames(std::filesystem::path classFolder = "/sys/class/net");

    std::string phoneName(const std::string& interfaceName);

private:
    std::string newName(const std::string& interfaceName);

    std::filesystem::path classFolder_;
    std::map<std::string, std::string> given_;
    int cellular_ = 0;
    int wired_ = 0;
};

} // namespace kivo::platform
