#pragma once

#include "ProtocolRequest.hpp"

#include <string_view>

namespace kivo::simulator {

/// The key for scans that every session hands out.
inline constexpr std::string_view sessionDeviceKey = "simulated-device-key";

// The server's verdicts on a scan, for the simulated vendor's library. A real vendor's verdict is a sealed text.
inline constexpr std::string_view scanAcceptedBlob = "simulated-blob:accepted";
inline constexpr std::string_view scanAgainBlob = "simulated-blob:scan-again";

/// Judges a request to the facemap or the ID scan endpoint; throws a `Violation` where it breaks the protocol.
void requireScan(const Address& address, const ServiceRequest& request);

} // namespace kivo::simulator
