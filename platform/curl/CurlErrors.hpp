#pragma once

#include "platform/curl/HttpAnswer.hpp"

#include <kivo/platform/Url.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <chrono>
#include <optional>
#include <string>

namespace kivo::platform {

/// What is known about an exchange that libcurl gave up.
struct CurlFailure {
    CURLcode code = CURLE_OK;
    /// The system's error number, or 0.
    int systemError = 0;
    /// libcurl's own words; may be empty.
    std::string detail;
    /// Where the last exchange went, after redirects.
    Url server;
    std::chrono::milliseconds timeout{};
    std::string trustFile;
};

/// The failure in the terms of the session. The text names host and port, never path, query, headers or body.
UrlError urlError(const CurlFailure& failure);

UrlError cancelledError();
UrlError pinMismatchError(const Url& server);
/// The connection ended too early for anybody to know what the server has made of the request.
UrlError connectionLostError(const Url& server);

/// An answer that was refused for what `fault` says.
UrlError answerError(HttpAnswer::Fault fault, const HttpLimits& limits, const Url& server);

/// Why a redirect to `address` is not followed; absent when it is.
std::optional<UrlError> redirectError(const std::optional<Url>& address, const Url& from);
UrlError tooManyRedirectsError(const Url& last);

} // namespace kivo::platform
