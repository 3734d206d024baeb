#pragma once

#include "BiodataEndpoint.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// Where a request went: the endpoint, the session its path names, and what follows in the path.
struct Address {
    Endpoint endpoint;
    std::string session;
    std::string operation;
};

/// What the identity service says to a request.
struct Reply {
    std::string body;
    std::optional<std::string> violation;
    int status = 200;
};

/// The identity service's side of the session protocol. Callable from any thread.
class SessionProtocol {
public:
    /// `base` makes the address of an endpoint's host.
    SessionProtocol(IdentityServiceConfiguration configuration, std::function<std::string(Endpoint)> base);

    static constexpr std::string_view joinPath = "/enrol/join.html";

    /// Reads a path; absent when no endpoint has it.
    static std::optional<Address> addressOf(std::string_view path);

    /// Judges a request and answers it.
    Reply answer(const Address& address, std::string_view method, std::string_view contentType,
                 std::string_view accessKey, std::string_view body);

    bool hasSession(const std::string& session) const;

    static std::string refusal(std::string_view responseCode, std::string_view message);

private:
    Reply join(std::string_view body);
    void require(const Address& address, const nlohmann::ordered_json& request, const std::string& tid) const;
    std::optional<std::string> tidOf(const std::string& session) const;
    std::string openSession();

    const IdentityServiceConfiguration configuration_;
    const std::function<std::string(Endpoint)> base_;
    BiodataEndpoint biodata_;
    mutable std::mutex mutex_;
    /// The transaction identifier of every session by the name in its addresses.
    std::map<std::string, std::string> sessions_;
};

} // namespace kivo::simulator
