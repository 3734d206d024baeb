#pragma once

#include "SessionProtocol.hpp"

#include <string_view>

namespace kivo::simulator {

/// A request to the facemap or the ID scan endpoint. Views into the request as it was read: scans are large.
struct ScanRequest {
    Endpoint endpoint;
    /// What the path has behind the endpoint's address.
    std::string_view operation;
    std::string_view method;
    std::string_view contentType;
    std::string_view deviceKey;
    std::string_view userAgent;
    /// The header X-User-Agent.
    std::string_view vendorUserAgent;
    std::string_view body;
};

/// The device key that every session hands out.
inline constexpr std::string_view sessionDeviceKey = "simulated-device-key";

/// Judges a scan and answers it: a good one with `blob` for the vendor's library.
Reply answerScan(const ScanRequest& request, bool isSessionOpen, std::string_view blob);

} // namespace kivo::simulator
