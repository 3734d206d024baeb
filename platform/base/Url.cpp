#include <kivo/platform/Url.hpp>

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

namespace kivo::platform {
namespace {

using std::string_view_literals::operator""sv;

constexpr auto afterScheme = "://"sv;

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string lowered(std::string_view text) {
    std::string copy{text};
    std::ranges::transform(copy, copy.begin(), lower);
    return copy;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetterOrDigit(char c) {
    return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'z');
}

bool isHexDigit(char c) {
    return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'f');
}

bool isScheme(std::string_view text) {
    return !text.empty() && lower(text.front()) >= 'a' && lower(text.front()) <= 'z' &&
           std::ranges::all_of(text, [](char c) { return isLetterOrDigit(c) || "+-."sv.contains(c); });
}

// Narrower than a registered name of RFC 3986, which may hold escapes and signs that readers of addresses disagree on.
bool isHostName(std::string_view text) {
    return !text.empty() && !text.starts_with('.') && !text.contains("..") &&
           std::ranges::all_of(text, [](char c) { return isLetterOrDigit(c) || "-._~"sv.contains(c); });
}

bool isIPv6(const std::string& text) {
    in6_addr address{};
    return std::ranges::all_of(text, [](char c) { return isHexDigit(c) || c == ':' || c == '.'; }) &&
           ::inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

// What follows the host and the port: path, query and fragment.
bool isRest(std::string_view text) {
    bool isInFragment = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '%') {
            if (i + 2 >= text.size() || !isHexDigit(text[i + 1]) || !isHexDigit(text[i + 2])) {
                return false;
            }
        } else if (c == '#' && !isInFragment) {
            isInFragment = true;
        } else if (!isLetterOrDigit(c) && !"-._~!$&'()*+,;=:@/?"sv.contains(c)) {
            return false;
        }
    }
    return true;
}

std::uint16_t usualPort(std::string_view scheme) {
    if (scheme == "https") {
        return 443;
    }
    return scheme == "http" ? 80 : 0;
}

// `text` begins with the colon, or is empty where the address names no port.
std::optional<std::uint16_t> portIn(std::string_view text, std::string_view scheme) {
    if (text.empty() || text == ":") {
        return usualPort(scheme);
    }
    text.remove_prefix(1);
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    const bool isPort = error == std::errc{} && end == text.data() + text.size() && port > 0;
    return isPort ? std::optional{port} : std::nullopt;
}

} // namespace

std::optional<Url> parseUrl(std::string_view text) {
    const auto schemeEnd = text.find(afterScheme);
    if (text.size() > longestUrl || schemeEnd == text.npos || !isScheme(text.substr(0, schemeEnd))) {
        return std::nullopt;
    }
    Url url{.scheme = lowered(text.substr(0, schemeEnd)), .host = {}};
    text.remove_prefix(schemeEnd + afterScheme.size());
    const auto authority = text.substr(0, text.find_first_of("/?#"));
    const bool isBracketed = authority.starts_with('[');
    const auto hostEnd = std::min(authority.find(isBracketed ? ']' : ':'), authority.size());
    url.host = lowered(authority.substr(isBracketed ? 1 : 0, hostEnd - (isBracketed ? 1 : 0)));
    const auto afterHost = authority.substr(std::min(hostEnd + (isBracketed ? 1 : 0), authority.size()));
    const bool isHost = isBracketed ? hostEnd < authority.size() && isIPv6(url.host) : isHostName(url.host);
    const auto port = afterHost.empty() || afterHost.starts_with(':') ? portIn(afterHost, url.scheme) : std::nullopt;
    if (!isHost || !port || !isRest(text.substr(authority.size()))) {
        return std::nullopt;
    }
    url.port = *port;
    return url;
}

} // namespace kivo::platform
