#include "services/acquisition/facemap/facetec/ScanRequest.hpp"

#include "Configuration/session/Config.hpp"
#include "platform/json/Json.hpp"

#include <kivo/platform/Services.hpp>

#include <cstddef>
#include <utility>

namespace kivo {

platform::Data scanBody(std::initializer_list<ScanMember> members) {
    constexpr std::size_t punctuation = 6;
    std::size_t size = 2;
    for (const auto& member : members) {
        size += member.text != nullptr ? member.name.size() + member.text->size() + punctuation : 0;
    }
    platform::Data body;
    body.reserve(size);
    for (const auto& member : members) {
        if (member.text != nullptr) {
            body.push_back(body.empty() ? '{' : ',');
            json::appendRepaired(body, member.name);
            body.push_back(':');
            json::appendRepaired(body, *member.text);
        }
    }
    return body.empty() ? "{}" : std::move(body.append(1, '}'));
}

std::string scanUserAgent(const std::optional<std::string>& sessionId) {
    const auto& vendor = platform::services().faceTec;
    return vendor ? vendor->createFaceTecAPIUserAgentString(sessionId.value_or("")) : std::string{};
}

platform::UrlRequest scanRequest(std::string url, const std::string& userAgent, platform::Data body) {
    return {.url = std::move(url),
            .method = "POST",
            .headers = {{"Content-Type", "application/json"},
                        {"X-Device-Key", Config::DeviceKeyIdentifier().value_or("")},
                        {"User-Agent", userAgent}},
            .body = std::move(body)};
}

} // namespace kivo
