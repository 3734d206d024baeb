#pragma once

#include "json/Json.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

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

/// What every session that talks to the identity service has in common.
platform::UrlSessionConfiguration backendSessionConfiguration();

/// The one sender of the session's JSON requests, and the keeper of the attempt counter.
class NetworkManager {
public:
    using Success = std::function<void(platform::Data body)>;
    using Failure = std::function<void(const TransportError& error)>;

    static NetworkManager& shared();

    /// Acquisition attempts that remain to the current session. Any thread.
    std::atomic<std::int64_t> retryLimit = 0;

    /// POSTs `params`, to a pinned server only where pins are in force, and calls exactly one of the two
    /// callbacks, on the session's callback queue.
    ///
    /// Parameters that are no valid JSON (a text that is not UTF-8) go out as an empty body.
    void sendRequest(const std::string& urlString, const json::Value& params, Success success, Failure failure);

private:
    std::shared_ptr<platform::UrlSession> defaultSession();
    std::shared_ptr<platform::UrlSession> sessionInUse();

    std::mutex mutex_;
    std::shared_ptr<platform::UrlSession> defaultSession_;
};

} // namespace kivo
