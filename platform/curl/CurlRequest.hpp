#pragma once

#include <kivo/platform/Url.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <expected>
#include <string>
#include <vector>

namespace kivo::platform {

/// A request's header lines as libcurl reads them. The object must not move while a transfer uses the lines.
///
/// `isOnOtherServer`: a redirect has led to another server, which must not receive credentials.
class CurlHeaderList {
public:
    CurlHeaderList(const std::vector<HttpHeader>& sessionHeaders, const std::vector<HttpHeader>& requestHeaders,
                   bool carriesBody, bool isOnOtherServer);
    CurlHeaderList(const CurlHeaderList&) = delete;
    CurlHeaderList& operator=(const CurlHeaderList&) = delete;

    curl_slist* get() { return nodes_.data(); }

private:
    std::string lines_;
    std::vector<curl_slist> nodes_;
};

/// Whether a request of this method announces a body, even an empty body.
bool carriesBody(const UrlRequest& request);

/// The destination of the request, or the reason why the request cannot be sent.
std::expected<Url, UrlError> destinationOf(const UrlRequest& request, const std::vector<HttpHeader>& sessionHeaders);

/// Host and port of a destination; empty where there is none.
std::string serverOf(const std::expected<Url, UrlError>& destination);

} // namespace kivo::platform
