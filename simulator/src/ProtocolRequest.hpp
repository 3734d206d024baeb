#pragma once

#include <kivo/simulator/IdentityService.hpp>

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::simulator {

inline constexpr std::string_view joinPath = "/enrol/join.html";

/// The address of a request: the endpoint, the session in the path, and the rest of the path.
struct Address {
    Endpoint endpoint;
    std::string session;
    std::string operation;
};

/// Reads a path; absent when no endpoint has it.
std::optional<Address> addressOf(std::string_view path);

/// A request to the identity service. All members are views into the request as it was read: scans are large.
struct ServiceRequest {
    std::string_view method;
    std::string_view contentType;
    /// The header X-Access-Key.
    std::string_view accessKey;
    /// The header X-Device-Key.
    std::string_view deviceKey;
    std::string_view userAgent;
    /// The header X-User-Agent.
    std::string_view vendorUserAgent;
    std::string_view body;
};

/// A request's breach of the protocol. The checks throw it.
struct Violation {
    std::string text;
    /// The status of the answer.
    int httpStatus = 200;
};

/// Requires that `object` has exactly these members, all of them text. `where` names the object in a violation.
void requireTexts(const nlohmann::ordered_json& object, const std::string& where,
                  std::initializer_list<const char*> members);

/// The JSON in a body. A body that is no JSON is a violation.
nlohmann::ordered_json parsed(std::string_view body);

} // namespace kivo::simulator
