#include "ProtocolCheck.hpp"

#include <algorithm>
#include <string>

namespace kivo::simulator {

using Json = nlohmann::ordered_json;

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
    // Deeper than any request is, and not too deep to copy.
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
