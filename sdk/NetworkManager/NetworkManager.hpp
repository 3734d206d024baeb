#pragma once

#include "NetworkManager/RequestSender.hpp"

#include <string>
#include <utility>

namespace kivo {

/// The one sender of the session's JSON requests. Notices have a sender of their own, so that no request of the host
/// waits for a notice.
class NetworkManager {
public:
    using Success = RequestSender::Success;
    using Failure = RequestSender::Failure;

    static NetworkManager& shared();

    /// Sends a request of the host; see `RequestSender::send`.
    void sendRequest(const std::string& urlString, const json::Value& params, Success success, Failure failure) {
        requests_.send(urlString, params, std::move(success), std::move(failure));
    }

    /// Forgets the cookies of the service, those of notices included: the next session has nothing to do with the one
    /// before.
    void forgetCookies();

private:
    explicit NetworkManager(std::weak_ptr<platform::UrlSessionDelegate> judge)
        : requests_{std::move(judge)} {}

    RequestSender requests_;
};

} // namespace kivo
