#pragma once

#include "ProtocolRequest.hpp"

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace kivo::simulator {

// The keys that every session hands out.
inline constexpr std::string_view sessionDeviceKey = "simulated-device-key";
inline constexpr std::string_view sessionAccessKey = "simulated-access-key";
inline constexpr std::string_view sessionEncryptKey = "simulated-encrypt-key";

// The server's verdicts on a scan, for the simulated vendor's library. A real vendor's verdict is a sealed text.
inline constexpr std::string_view scanAcceptedBlob = "simulated-blob:accepted";
inline constexpr std::string_view scanAgainBlob = "simulated-blob:scan-again";

/// Judges a request to the facemap or the ID scan endpoint; throws a `Violation` where it breaks the protocol.
void requireScan(const Address& address, const ServiceRequest& request);

/// The document proxy of every session: takes the documents that the vendor has read, and remembers the reading
/// sessions. Callable from any thread; throws a `Violation` where a request breaks the protocol.
class DocumentProxy {
public:
    /// Judges a document and answers with the name of its reading session.
    std::string receive(const std::string& session, const ServiceRequest& request);

    /// Judges the notice that a reading belongs to the session with this transaction identifier.
    void requireNotice(const std::string& session, const std::string& tid, const nlohmann::ordered_json& notice) const;

private:
    mutable std::mutex mutex_;
    /// The names of the reading sessions, by the name of the session in which they were made.
    std::map<std::string, std::set<std::string>> readings_;
};

} // namespace kivo::simulator
