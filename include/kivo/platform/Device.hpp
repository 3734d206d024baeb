#pragma once

#include <kivo/Export.hpp>

#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

/// The address families that the SDK tells apart.
enum class AddressFamily { ipv4, ipv6, other };

/// One address of one network interface.
///
/// Interface names are the phone's: "en0" is the Wi-Fi interface, "en2" to "en4" are wired ones and "pdp_ip0" to
/// "pdp_ip3" are cellular. An implementation gives its own interfaces the name of their kind.
struct InterfaceAddress {
    /// The interface's name, such as "en0", and the kind of its address.
    std::string interfaceName;
    AddressFamily family = AddressFamily::other;
    /// Numeric host form, such as 192.0.2.7 or 2001:db8::1.
    std::string numericHost;
};

/// The device's description. Callable from any thread.
class KIVO_EXPORT Device {
public:
    virtual ~Device() = default;

    /// The operating system's version, such as 12.5.
    virtual std::string systemVersion() = 0;

    /// Identifies this device to this vendor's applications, as UUID text; absent when there is none.
    virtual std::optional<std::string> identifierForVendor() = 0;

    /// All addresses, in the system's order; empty when they cannot be listed.
    virtual std::vector<InterfaceAddress> interfaceAddresses() = 0;

    /// The machine field of the system's identification, as the system gives it.
    virtual std::string machine() = 0;
};

} // namespace kivo::platform
