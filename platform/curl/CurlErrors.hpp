#pragma once

#include "platform/curl/HttpAnswer.hpp"

#include <kivo/platform/Url.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <chrono>
#include <optional>
#include <string>

namespace kivo::platform {

/// The facts about an exchange that libcurl gave up.
struct CurlFailure {
    CURLcode code = CURLE_OK;
    /// The system's error number, or 0.
    int systemError = 0;
    /// libcurl's own text; may be empty.
    std::string detail;
    /// The server of the last exchange, after redirects.
    Url server;
    std::chrono::milliseconds timeout{};
    std::string trustFile;
};

/// The failure as the session reports it. The text names host and port, never path, query, headers or body.
UrlError urlError(const CurlFailure& failure);

UrlError cancelledError();
UrlError pinMismatchError(const Url& server);
/// The connection ended before the answer, so the effect of the request on the server is unknown.
UrlError connectionLostError(const Url& server);

/// The error for an answer that was refused because of `fault`.
UrlError answerError(HttpAnswer::Fault fault, const HttpLimits& limits, const Url& server);

/// The reason why a redirect to `address` is not followed; absent when the redirect is followed.
std::optional<UrlError> redirectError(const std::optional<Url>& address, const Url& from);
UrlError tooManyRedirectsError(const Url& last);

} // namespace kivo::platform
