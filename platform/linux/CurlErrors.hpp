#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <chrono>
#include <string>

namespace kivo::platform {

/// What is known about an exchange that libcurl gave up.
struct CurlFailure {
    CURLcode code = CURLE_OK;
    /// The system's error number, or 0.
    int systemError = 0;
    /// libcurl's own words; may be empty.
    std::string detail;
    /// The address in use at the end, after redirects.
    std::string url;
    std::chrono::milliseconds timeout{};
    std::string trustFile;
};

/// The failure in the terms of the session. The text names host and port, never path, query, headers or body.
UrlError urlError(const CurlFailure& failure);

UrlError cancelledError();
UrlError answerTooLargeError(std::size_t limit);
UrlError pinMismatchError(const std::string& url);

} // namespace kivo::platform
