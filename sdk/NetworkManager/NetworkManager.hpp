#pragma once

#include "platform/json/Json.hpp"

#include <kivo/ResponseCode.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace kivo {

/// Why a request did not end in a usable answer.
struct TransportError {
    /// What kept the answer away; absent when there was an answer outside 200 to 299, or one without a body.
    std::optional<platform::UrlErrorKind> cause;
    /// The answer's status, 0 without an answer.
    int httpStatus = 0;
    std::string text;

    std::string description() const;
};

/// The code for a request that got no usable answer: `own`, unless the server was not the pinned one.
ResponseCode codeOf(std::optional<platform::UrlErrorKind> cause, ResponseCode own);

/// The most bytes that an answer of the identity service may have: what the reader of JSON takes.
inline constexpr std::size_t longestAnswer = std::size_t{1024} * 1024;

/// What every session that talks to the identity service has in common. An exchange may take 180 seconds, of which a
/// `RequestSender` grants 60 to each request.
platform::UrlSessionConfiguration backendSessionConfiguration();

/// Sends JSON to the identity service, over connections and a callback queue that no other sender uses. At most six
/// requests to a server are under way at once; further requests wait for them. Any thread.
class RequestSender {
public:
    using Success = std::function<void(platform::Data body)>;
    using Failure = std::function<void(const TransportError& error)>;

    /// `judge` decides about servers where pins are in force. The judge may own the sender.
    explicit RequestSender(std::weak_ptr<platform::UrlSessionDelegate> judge);

    /// POSTs `params`, to a pinned server only where pins are in force, and calls exactly one of the two callbacks, on
    /// the session's callback queue; where no thread can be had, and in a forked child, on the calling thread before
    /// the operation returns.
    ///
    /// Parameters that are no valid JSON (a text that is not UTF-8) go out as an empty body.
    void send(const std::string& urlString, const json::Value& params, Success success, Failure failure);

    /// Forgets the cookies of the service.
    void forgetCookies();

private:
    std::shared_ptr<platform::UrlSession> session();

    const std::weak_ptr<platform::UrlSessionDelegate> judge_;
    std::mutex mutex_;
    /// Made when first needed.
    std::shared_ptr<platform::UrlSession> withSystemTrust_;
    std::shared_ptr<platform::UrlSession> pinned_;
};

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
