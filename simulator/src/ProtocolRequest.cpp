#include "ProtocolRequest.hpp"

#include <algorithm>
#include <array>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, allEndpoints.size()> endpointNames{"join",   "update",  "status", "commit",
                                                                          "upload", "facemap", "idScan", "biodata"};

} // namespace

std::string_view name(Endpoint endpoint) {
    const auto index = static_cast<std::size_t>(endpoint);
    return index < endpointNames.size() ? endpointNames[index] : std::string_view{};
}

std::optional<Address> addressOf(std::string_view path) {
    if (path == joinPath) {
        return Address{.endpoint = Endpoint::join, .session = "", .operation = ""};
    }
    // /session/NAME/ENDPOINT, then the operation, which clients append to the vendors' addresses.
    constexpr std::string_view prefix = "/session/";
    const auto slash = path.starts_with(prefix) ? path.find('/', prefix.size()) : std::string_view::npos;
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    const auto rest = path.substr(slash + 1);
    const auto endpoint = rest.substr(0, rest.find('/'));
    const auto found = std::ranges::find(endpointNames, endpoint);
    if (found == endpointNames.end() || endpoint == name(Endpoint::join)) {
        return std::nullopt;
    }
    return Address{.endpoint = static_cast<Endpoint>(found - endpointNames.begin()),
                   .session = std::string{path.substr(prefix.size(), slash - prefix.size())},
                   .operation = std::string{rest.substr(endpoint.size())}};
}

void requireTexts(const Json& object, const std::string& where, std::initializer_list<const char*> members) {
    if (!object.is_object()) {
        throw Violation{where + " is not an object"};
    }
    for (const auto* member : members) {
        const auto found = object.find(member);
        if (found == object.end()) {
            throw Violation{where + " lacks \"" + member + "\""};
        }
        if (!found->is_string()) {
            throw Violation{where + " has a \"" + member + "\" that is not text"};
        }
    }
    for (const auto& [key, value] : object.items()) {
        if (std::ranges::find(members, key) == members.end()) {
            throw Violation{std::string{where}.append(" has an unknown member \"").append(key).append("\"")};
        }
    }
}

Json parsed(std::string_view body) {
    // Every sound request is flatter, and values of this depth are copied safely.
    constexpr int deepest = 32;
    const auto boundDepth = [](int depth, Json::parse_event_t, Json&) {
        if (depth > deepest) {
            throw Violation{"the body is nested more than " + std::to_string(deepest) + " deep"};
        }
        return true;
    };
    auto json = Json::parse(body, boundDepth, /*allow_exceptions=*/false);
    if (json.is_discarded()) {
        throw Violation{"the body is not JSON"};
    }
    return json;
}

} // namespace kivo::simulator
