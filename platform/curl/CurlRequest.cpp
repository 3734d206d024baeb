#include "platform/curl/CurlRequest.hpp"

#include "platform/curl/HttpAnswer.hpp"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace kivo::platform {
namespace {

using std::string_view_literals::operator""sv;

/// Whether a text may be a header's name or a method.
bool isToken(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return ascii::isLetterOrDigit(c) || "!#$%&'*+-.^_`|~"sv.contains(c);
    });
}

bool contains(const std::vector<HttpHeader>& headers, std::string_view name) {
    return std::ranges::any_of(headers, [name](const auto& header) { return sameName(header.first, name); });
}

// Whether the header says where a message ends, or asks for an expectation. The end follows from the body alone;
// another statement would garble the connection. A refused expectation would have the request sent twice.
bool framesMessage(std::string_view name) {
    return sameName(name, "Content-Length") || sameName(name, "Transfer-Encoding") || sameName(name, "Expect");
}

bool isCredential(std::string_view name) {
    return sameName(name, "Authorization") || sameName(name, "Cookie") || sameName(name, "Proxy-Authorization");
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

CurlHeaderList::CurlHeaderList(const std::vector<HttpHeader>& sessionHeaders,
                               const std::vector<HttpHeader>& requestHeaders, bool carriesBody, bool isOnOtherServer) {
    constexpr std::size_t roomForAdditions = 64;
    std::size_t room = roomForAdditions;
    for (const auto* const headers : {&sessionHeaders, &requestHeaders}) {
        for (const auto& [name, value] : *headers) {
            room += name.size() + value.size() + 3;
        }
    }
    // The room is enough, so that the nodes can point to the lines at once.
    lines_.reserve(room);
    nodes_.reserve(sessionHeaders.size() + requestHeaders.size() + 3);
    const auto add = [&](std::string_view name, std::string_view separator, std::string_view value) {
        nodes_.push_back({lines_.data() + lines_.size(), nullptr});
        lines_.append(name).append(separator).append(value).push_back('\0');
    };
    const auto addHeader = [&](const HttpHeader& header) {
        const auto value = trimmed(header.second);
        if (!framesMessage(header.first) && !(isOnOtherServer && isCredential(header.first))) {
            // libcurl leaves a header out when it reads "name:", and sends a header without value when it reads
            // "name;".
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
    for (std::size_t i = 1; i < nodes_.size(); ++i) {
        nodes_[i - 1].next = &nodes_[i];
    }
}

bool carriesBody(const UrlRequest& request) {
    return !request.body.empty() || request.method == "POST" || request.method == "PUT" || request.method == "PATCH";
}

std::expected<Url, UrlError> destinationOf(const UrlRequest& request, const std::vector<HttpHeader>& sessionHeaders) {
    auto url = parseUrl(request.url);
    if (!url) {
        return std::unexpected{UrlError{UrlErrorKind::badUrl, "The address is not a valid absolute URL"}};
    }
    if (url->scheme != "https") {
        return std::unexpected{
            UrlError{UrlErrorKind::unsupportedScheme,
                     "The address of a server on " + url->host + " must begin with https, not " + url->scheme}};
    }
    if (!isToken(request.method)) {
        return std::unexpected{
            UrlError{UrlErrorKind::unknown, "The request's method is empty or contains a character not allowed there"}};
    }
    for (const auto* const headers : {&sessionHeaders, &request.headers}) {
        if (auto fault = faultIn(*headers)) {
            return std::unexpected{std::move(*fault)};
        }
    }
    return std::move(*url);
}

std::string serverOf(const std::expected<Url, UrlError>& destination) {
    return destination ? destination->host + ":" + std::to_string(destination->port) : std::string{};
}

} // namespace kivo::platform
