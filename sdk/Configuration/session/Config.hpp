#pragma once

#include <optional>
#include <string>

namespace kivo {

/// Settings of the joined session, read afresh from the secure store at every access.
struct Config {
    /// Where face scans are posted; empty when missing.
    static std::string facemapBaseURL();

    /// Where ID scans are posted; empty when missing.
    static std::string ocrIDScanBaseURL();

    /// The face scan library's device key: absent without a stored session, empty when that has none.
    static std::optional<std::string> DeviceKeyIdentifier();
};

} // namespace kivo
