#pragma once

#include <kivo/platform/Url.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <expected>
#include <string>
#include <vector>

namespace kivo::platform {

/// A request's header lines as libcurl reads them. The lines must stay where they are while a transfer uses them.
///
/// `isAbroad`: a redirect has led to another server, for which credentials are not meant.
class CurlHeaderList {
public:
    CurlHeaderList(const std::vector<HttpHeader>& sessionHeaders, const std::vector<HttpHeader>& requestHeaders,
                   bool carriesBody, bool isAbroad);
    CurlHeaderList(const CurlHeaderList&) = delete;
    CurlHeaderList& operator=(const CurlHeaderList&) = delete;

    curl_slist* get() { return nodes_.data(); }

private:
    std::string lines_;
    std::vector<curl_slist> nodes_;
};

/// Whether a request of this kind announces a body, be it an empty one.
bool carriesBody(const UrlRequest& request);

/// Where the request goes, or why there is no point in sending it.
std::expected<Url, UrlError> destinationOf(const UrlRequest& request, const std::vector<HttpHeader>& sessionHeaders);

} // namespace kivo::platform
