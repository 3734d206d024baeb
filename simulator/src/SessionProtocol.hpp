#pragma once

#include "DocumentProxy.hpp"
#include "VendorEndpoints.hpp"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::simulator {

/// The identity service's answer to a request.
struct Reply {
    std::string body;
    std::optional<std::string> violation;
    int status = 200;
    /// The name of the session that a join has opened.
    std::string session{};
};

/// The identity service's side of the session protocol. Callable from any thread.
class SessionProtocol {
public:
    /// `base` returns the address of an endpoint's host, such as "https://localhost:4711".
    SessionProtocol(IdentityServiceConfiguration configuration, std::function<std::string(Endpoint)> base);

    /// Judges a request and answers it. The answer to a good scan hands `scanResultBlob` to the vendor's library.
    Reply answer(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob);

    std::vector<std::string> activationCodes() const;
    void setActivationCodes(std::vector<std::string> codes);

    /// The sessions joined so far, in order; without the oldest, where there are too many.
    std::vector<JoinedSession> sessions() const;

    static std::string refusal(std::string_view responseCode, std::string_view message);

private:
    Reply judge(const Address& address, const ServiceRequest& request, std::string_view scanResultBlob);
    Reply join(std::string_view body);
    void require(const Address& address, const nlohmann::ordered_json& request, const std::string& tid) const;
    std::optional<std::string> tidOf(const std::string& session) const;
    Reply openSession(std::string interfaceVersion);

    const IdentityServiceConfiguration configuration_;
    const std::function<std::string(Endpoint)> base_;
    DocumentProxy documentProxy_;
    mutable std::mutex mutex_;
    std::vector<std::string> activationCodes_;
    /// The sessions by their numbers.
    std::map<std::uint64_t, JoinedSession> sessions_;
    std::uint64_t lastSession_ = 0;
};

} // namespace kivo::simulator
