#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

/// An absolute address taken apart. Spaces and control characters make it invalid.
class ParsedUrl {
public:
    explicit ParsedUrl(const std::string& url);

    bool isValid() const { return handle_ != nullptr; }

    /// In lower case.
    std::string scheme() const;
    /// Without the brackets of a numeric IPv6 host.
    std::string host() const;
    /// The scheme's own port when the address names none.
    std::string port() const;

private:
    struct Free {
        void operator()(CURLU* handle) const { curl_url_cleanup(handle); }
    };

    std::string part(CURLUPart which, unsigned int flags) const;

    std::unique_ptr<CURLU, Free> handle_;
};

/// A request's header lines as libcurl reads them. The lines must stay where they are while a transfer uses them.
class CurlHeaderList {
public:
    CurlHeaderList(const std::vector<HttpHeader>& sessionHeaders, const std::vector<HttpHeader>& requestHeaders,
                   bool carriesBody);
    CurlHeaderList(const CurlHeaderList&) = delete;
    CurlHeaderList& operator=(const CurlHeaderList&) = delete;

    curl_slist* get() { return nodes_.data(); }

private:
    std::string lines_;
    std::vector<curl_slist> nodes_;
};

/// Whether a request of this kind announces a body, be it an empty one.
bool carriesBody(const UrlRequest& request);

/// Why the request cannot be sent at all; absent when it can.
std::optional<UrlError> faultIn(const UrlRequest& request, const std::vector<HttpHeader>& sessionHeaders);

} // namespace kivo::platform
