#include <kivo/simulator/Secrets.hpp>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>

namespace kivo::simulator {
namespace {

using Json = nlohmann::ordered_json;

constexpr int deepest = 32;
constexpr int mostValues = 4096;
constexpr std::ptrdiff_t longestText = 1000;

/// The members whose values may be read. All others are masked, except addresses of endpoints.
constexpr std::array<std::string_view, 26> openMembers{"kivo-action",
                                                       "response-type",
                                                       "response-code",
                                                       "response-message",
                                                       "tid",
                                                       "opaqueId",
                                                       "sessionId",
                                                       "os",
                                                       "status",
                                                       "message",
                                                       "source",
                                                       "acquisition-object",
                                                       "target-env",
                                                       "appVersion",
                                                       "networkType",
                                                       "sdkVersion",
                                                       "apiLevel",
                                                       "retry-limit",
                                                       "app-doclist",
                                                       "deviceModel",
                                                       "kivo-app-doclist",
                                                       "kivo-expiry-grace",
                                                       "kivo-images",
                                                       "kivo-doc-issuers",
                                                       "biodata-proxy",
                                                       "kivo-facematch-min"};

constexpr std::array<std::string_view, 8> openHeaders{
    "Accept", "Accept-Encoding", "Connection", "Content-Length", "Content-Type", "Expect", "Transfer-Encoding", "Host"};

bool isOpen(std::string_view member) {
    return member.ends_with("-endpoint") || std::ranges::find(openMembers, member) != openMembers.end();
}

/// The number of characters, of a text that may be no UTF-8 the number of bytes that begin one.
std::ptrdiff_t length(std::string_view text) {
    return std::ranges::count_if(text, [](char each) { return (static_cast<unsigned char>(each) & 0xC0U) != 0x80U; });
}

std::string masked(std::string_view text) {
    const auto characters = length(text);
    return "\u2022\u2022\u2022 (" + std::to_string(characters) + (characters == 1 ? " character)" : " characters)");
}

/// The first characters of a long text.
std::string shortened(std::string text) {
    const auto whole = length(text);
    if (whole <= longestText) {
        return text;
    }
    std::ptrdiff_t characters = 0;
    const auto end = std::ranges::find_if(text, [&](char each) {
        characters += (static_cast<unsigned char>(each) & 0xC0U) != 0x80U ? 1 : 0;
        return characters > longestText;
    });
    text.erase(end, text.end());
    return text + "\u2026 (" + std::to_string(whole) + " characters)";
}

void mask(std::string_view member, Json& value) {
    if (value.is_object()) {
        for (auto& [key, each] : value.items()) {
            mask(key, each);
        }
    } else if (value.is_array()) {
        for (auto& each : value) {
            mask(member, each);
        }
    } else if (value.is_string()) {
        auto& text = value.get_ref<std::string&>();
        text = isOpen(member) ? shortened(std::move(text)) : masked(text);
    } else if (value.is_number() && !isOpen(member)) {
        value = "\u2022\u2022\u2022 (a number)";
    }
}

} // namespace

std::string withoutSecrets(std::string_view body) {
    if (body.empty()) {
        return "";
    }

    struct TooMuch {};

    int values = 0;
    const auto bound = [&](int depth, Json::parse_event_t, Json&) {
        if (depth > deepest || ++values > 2 * mostValues) {
            throw TooMuch{};
        }
        return true;
    };
    Json json;
    try {
        json = Json::parse(body, bound, /*allow_exceptions=*/false);
    } catch (const TooMuch&) {
        return "(" + std::to_string(body.size()) + " bytes with too many values or levels)";
    }
    if (!json.is_object()) {
        return "(" + std::to_string(body.size()) + " bytes that are no JSON object)";
    }
    mask("", json);
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string headerWithoutSecrets(std::string_view name, std::string_view value) {
    const bool isOpenHeader = std::ranges::any_of(openHeaders, [&](std::string_view open) {
        return std::ranges::equal(open, name, [](unsigned char one, unsigned char other) {
            return std::tolower(one) == std::tolower(other);
        });
    });
    return isOpenHeader ? shortened(std::string{value}) : masked(value);
}

} // namespace kivo::simulator
