#include "linux/CurlRequest.hpp"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace kivo::platform {
namespace {

using std::string_view_literals::operator""sv;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool contains(const std::vector<HttpHeader>& headers, std::string_view name) {
    return std::ranges::any_of(headers, [name](const auto& header) { return sameName(header.first, name); });
}

// How a message is delimited follows from the body alone; a header that says otherwise would garble the connection.
bool framesMessage(std::string_view name) {
    return sameName(name, "Content-Length") || sameName(name, "Transfer-Encoding");
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

bool isToken(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return (c >= '0' && c <= '9') || (lower(c) >= 'a' && lower(c) <= 'z') || "!#$%&'*+-.^_`|~"sv.contains(c);
    });
}

std::optional<UrlError> faultIn(const std::vector<HttpHeader>& headers) {
    for (const auto& [name, value] : headers) {
        if (!isToken(name)) {
            return UrlError{UrlErrorKind::unknown,
                            "A header's name is empty or contains a character not allowed there"};
        }
        if (value.find_first_of("\r\n\0"sv) != value.npos) {
            return UrlError{UrlErrorKind::unknown,
                            "The value of the header " + name + " contains a line break or a zero byte"};
        }
    }
    return std::nullopt;
}

} // namespace

ParsedUrl::ParsedUrl(const std::string& url) {
    const auto isOdd = [](char c) { return static_cast<unsigned char>(c) <= ' ' || c == '\x7f'; };
    if (std::ranges::any_of(url, isOdd)) {
        return;
    }
    handle_.reset(curl_url());
    if (handle_ && curl_url_set(handle_.get(), CURLUPART_URL, url.c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        handle_.reset();
    }
}

std::string ParsedUrl::scheme() const {
    return part(CURLUPART_SCHEME, 0);
}

std::string ParsedUrl::host() const {
    auto host = part(CURLUPART_HOST, 0);
    return host.starts_with('[') && host.ends_with(']') ? host.substr(1, host.size() - 2) : host;
}

std::string ParsedUrl::port() const {
    return part(CURLUPART_PORT, CURLU_DEFAULT_PORT);
}

std::string ParsedUrl::part(CURLUPart which, unsigned int flags) const {
    char* text = nullptr;
    if (!handle_ || curl_url_get(handle_.get(), which, &text, flags) != CURLUE_OK) {
        return {};
    }
    const std::unique_ptr<char, decltype(&curl_free)> owner{text, &curl_free};
    return text;
}

CurlHeaderList::CurlHeaderList(const std::vector<HttpHeader>& sessionHeaders,
                               const std::vector<HttpHeader>& requestHeaders, bool carriesBody) {
    std::vector<std::size_t> starts;
    starts.reserve(sessionHeaders.size() + requestHeaders.size() + 3);
    const auto add = [&](std::string_view name, std::string_view separator, std::string_view value) {
        starts.push_back(lines_.size());
        lines_.append(name).append(separator).append(value).push_back('\0');
    };
    const auto addHeader = [&](const HttpHeader& header) {
        const auto value = trimmed(header.second);
        if (!framesMessage(header.first)) {
            // libcurl takes "name:" for the wish to leave a header out, and "name;" for one without value.
            add(header.first, value.empty() ? ";" : ": ", value);
        }
    };
    for (const auto& header : sessionHeaders) {
        if (!contains(requestHeaders, header.first)) {
            addHeader(header);
        }
    }
    std::ranges::for_each(requestHeaders, addHeader);
    const auto leaveOut = [&](std::string_view name) {
        if (!contains(requestHeaders, name) && !contains(sessionHeaders, name)) {
            add(name, ":", "");
        }
    };
    leaveOut("Accept");
    if (carriesBody) {
        leaveOut("Expect");
        leaveOut("Content-Type");
    }
    nodes_.resize(starts.size());
    for (std::size_t i = 0; i < starts.size(); ++i) {
        nodes_[i] = {lines_.data() + starts[i], i + 1 < starts.size() ? &nodes_[i + 1] : nullptr};
    }
}

bool carriesBody(const UrlRequest& request) {
    return !request.body.empty() || request.method == "POST" || request.method == "PUT" || request.method == "PATCH";
}

std::optional<UrlError> faultIn(const UrlRequest& request, const std::vector<HttpHeader>& sessionHeaders) {
    const ParsedUrl url{request.url};
    if (!url.isValid()) {
        return UrlError{UrlErrorKind::badUrl, "The address is not a valid absolute URL"};
    }
    if (const auto scheme = url.scheme(); !sameName(scheme, "https")) {
        return UrlError{UrlErrorKind::unsupportedScheme,
                        "The address of a server on " + url.host() + " must begin with https, not " + scheme};
    }
    if (!isToken(request.method)) {
        return UrlError{UrlErrorKind::unknown,
                        "The request's method is empty or contains a character not allowed there"};
    }
    if (auto fault = faultIn(sessionHeaders)) {
        return fault;
    }
    return faultIn(request.headers);
}

} // namespace kivo::platform
