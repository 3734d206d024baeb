#pragma once

#include <kivo/Export.hpp>

#include <string_view>

namespace kivo::platform {

/// Receives what the platform layer has to tell the person who runs the host: a property list that cannot be
/// read, a database put aside, a data folder without write permission. Never carries a secret.
class KIVO_EXPORT Diagnostics {
public:
    virtual ~Diagnostics() = default;

    /// `component` is a short word such as "keychain"; `text` says what happened and what to do. Any thread. A report
    /// can come while the services are made, so it must call neither `services()` nor the SDK.
    virtual void report(std::string_view component, std::string_view text) = 0;
};

} // namespace kivo::platform
