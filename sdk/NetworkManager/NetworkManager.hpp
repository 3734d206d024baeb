#pragma once

#include "platform/json/Json.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
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

/// The most bytes that an answer of the identity service may have: what the reader of JSON takes.
inline constexpr std::size_t longestAnswer = std::size_t{1024} * 1024;

/// What every session that talks to the identity service has in common. An exchange may take 180 seconds, of which
/// `NetworkManager` grants 60 to each request.
platform::UrlSessionConfiguration backendSessionConfiguration();

/// The one sender of the session's JSON requests, and the keeper of the attempt counter.
///
/// Six requests to a server are under way at once; further ones wait for them. Notices to the service have connections,
/// places and a callback queue of their own, so that no request of the host waits for a notice.
class NetworkManager {
public:
    using Success = std::function<void(platform::Data body)>;
    using Failure = std::function<void(const TransportError& error)>;

    static NetworkManager& shared();

    /// Acquisition attempts that remain to the current session. Any thread.
    std::atomic<std::int64_t> retryLimit = 0;

    /// POSTs `params`, to a pinned server only where pins are in force, and calls exactly one of the two
    /// callbacks, on the session's callback queue; where no thread can be had, and in a forked child, on the calling
    /// thread before the operation returns.
    ///
    /// Parameters that are no valid JSON (a text that is not UTF-8) go out as an empty body.
    void sendRequest(const std::string& urlString, const json::Value& params, Success success, Failure failure) {
        send(Way::ofRequests, urlString, params, std::move(success), std::move(failure));
    }

    /// The same for what the library tells the service of its own accord.
    void sendNotice(const std::string& urlString, const json::Value& params, Success success, Failure failure) {
        send(Way::ofNotices, urlString, params, std::move(success), std::move(failure));
    }

    /// Forgets the cookies of the service: the next session has nothing to do with the one before.
    void forgetCookies();

private:
    enum class Way : std::size_t { ofRequests, ofNotices };

    void send(Way way, const std::string& urlString, const json::Value& params, Success success, Failure failure);
    std::shared_ptr<platform::UrlSession> sessionFor(Way way);

    std::mutex mutex_;
    /// Each way has two sessions, one with the system's trust and one that is pinned, made when first needed.
    std::array<std::array<std::shared_ptr<platform::UrlSession>, 2>, 2> sessions_;
};

} // namespace kivo
