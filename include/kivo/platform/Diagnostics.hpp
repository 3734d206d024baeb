#pragma once

#include <kivo/Export.hpp>

#include <string_view>

namespace kivo::platform {

/// Receives the platform layer's reports for the person who runs the host: an unreadable property list, a database put
/// aside, a data folder without write permission. Reports never carry a secret.
class KIVO_EXPORT Diagnostics {
public:
    virtual ~Diagnostics() = default;

    /// `component` is a short word such as "keychain"; `text` gives the fault and the remedy. Called on any thread,
    /// even while the services are made: an implementation must call neither `services()` nor the SDK.
    virtual void report(std::string_view component, std::string_view text) = 0;
};

} // namespace kivo::platform
