#pragma once

#include "VendorEndpoints.hpp"

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// The identity service's answer to a request.
struct Reply {
    std::string body;
    std::optional<std::string> violation;
    int status = 200;
};

/// The identity service's side of the session protocol. Callable from any thread.
class SessionProtocol {
public:
    /// `base` returns the address of an endpoint's host, such as "https://localhost:4711".
    SessionProtocol(IdentityServiceConfiguration configuration, std::function<std::string(Endpoint)> base);

    /// Judges a request and answers it. The answer to a good scan hands `scanResultBlob` to the vendor's library.
    Reply answer(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob);

    static std::string refusal(std::string_view responseCode, std::string_view message);

private:
    Reply judge(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob);
    Reply join(std::string_view body);
    void require(const Address& address, const nlohmann::ordered_json& request, const std::string& tid) const;
    std::optional<std::string> tidOf(const std::string& session) const;
    std::string openSession();

    const IdentityServiceConfiguration configuration_;
    const std::function<std::string(Endpoint)> base_;
    DocumentProxy documentProxy_;
    mutable std::mutex mutex_;
    /// The transaction identifier of every session by the name in its addresses.
    std::map<std::string, std::string> sessions_;
};

} // namespace kivo::simulator
