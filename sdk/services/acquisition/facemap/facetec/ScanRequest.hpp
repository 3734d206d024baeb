#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo {

/// A member of a scan's body; one without a text is left out.
struct ScanMember {
    std::string_view name;
    const std::string* text;
};

/// The first picture of a list; null when there is none.
inline const std::string* firstOf(const std::vector<std::string>& pictures) {
    return pictures.empty() ? nullptr : &pictures.front();
}

/// The text of an optional one; null when there is none.
inline const std::string* textOf(const std::optional<std::string>& text) {
    return text ? &*text : nullptr;
}

/// The JSON object with these members, written once into the bytes that travel: a scan may be many megabytes.
platform::Data scanBody(std::initializer_list<ScanMember> members);

/// The vendor's name for this application and one of its sessions, which its server wants to see.
std::string scanUserAgent(const std::optional<std::string>& sessionId);

/// The request that takes a body to the vendor's server, under the session's device key.
platform::UrlRequest scanRequest(std::string url, const std::string& userAgent, platform::Data body);

} // namespace kivo
