#pragma once

#include <kivo/platform/Device.hpp>

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kivo {

/// The information about the device and the application that a join sends to the identity service.
struct Environment {
    using Information = std::vector<std::pair<std::string, std::string>>;

    /// The application information, collected on first use and kept for the life of the process.
    static const Information& applicationInformation();

    /// The address of the device: the last address of a reported interface, so that a cellular address, which is listed
    /// after the local addresses, counts. Empty without an address.
    static std::string networkIpAddress(std::span<const platform::InterfaceAddress> addresses);
};

} // namespace kivo
