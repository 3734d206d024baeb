#pragma once

#include <kivo/platform/Device.hpp>

#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kivo {

/// What the SDK tells the identity service about the device and the application.
struct Environment {
    using Information = std::vector<std::pair<std::string, std::string>>;

    /// The application information, put together on first use and kept for the life of the process.
    static const Information& applicationInformation();

    /// The address by which the device is known: the last of a reported interface, so that a cellular address, listed
    /// after the local ones, counts. Empty when there is none.
    static std::string networkIpAddress(std::span<const platform::InterfaceAddress> addresses);
};

} // namespace kivo
