#include "Judge.hpp"

#include <kivo/ResponseCode.hpp>
#include <kivo/platform/Url.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace simulation {
namespace {

using kivo::platform::UrlErrorKind;
using Json = Judge::Json;

const std::string join = "join";

std::string inQuotes(std::string_view text) {
    return "\"" + std::string{text} + "\"";
}

/// A word for the type of a value.
std::string typeOf(const Json& value) {
    switch (value.type()) {
    case Json::value_t::null:
        return "null";
    case Json::value_t::boolean:
        return "a boolean";
    case Json::value_t::object:
        return "an object";
    case Json::value_t::array:
        return "a list";
    case Json::value_t::string:
        return "a text";
    default:
        return "a number";
    }
}

/// What is expected where an exchange has failed.
std::string expectationFor(UrlErrorKind kind) {
    switch (kind) {
    case UrlErrorKind::cannotFindHost:
    case UrlErrorKind::cannotConnect:
        return "a server at this address";
    case UrlErrorKind::secureConnectionFailed:
    case UrlErrorKind::serverCertificateUntrusted:
        return "TLS 1.2 or later, and a valid certificate for this host from a trusted authority";
    case UrlErrorKind::timedOut:
        return "a whole answer; hosts wait for 60 s";
    case UrlErrorKind::answerTooLarge:
        return "at most 1 MiB of an answer in a session, 16 MiB of the answer to a scan, and 64 KiB beside the body";
    case UrlErrorKind::badUrl:
    case UrlErrorKind::unsupportedScheme:
    case UrlErrorKind::tooManyRedirects:
        return "at most 20 redirects, each to an https address";
    default:
        return "a whole HTTP answer with its length";
    }
}

/// A setting of the session's description.
struct Setting {
    const char* group;
    const char* name;
    /// Whether a session cannot do without.
    bool isRequired;
    bool isAddress;
};

constexpr std::array settings{
    Setting{"idp-config", "update-endpoint", true, true},    Setting{"idp-config", "status-endpoint", true, true},
    Setting{"idp-config", "resume-endpoint", true, true},    Setting{"idp-config", "retry-limit", false, false},
    Setting{"idp-biodata", "biodata-endpoint", true, true},  Setting{"idp-biodata", "biodata-proxy", false, true},
    Setting{"idp-facemap", "facemap-endpoint", false, true}, Setting{"idp-facemap", "ocridscan-endpoint", false, true},
};

constexpr std::array groups{"idp-config", "app-config", "idp-biodata", "idp-facemap"};

bool isHttps(const std::string& text) {
    const auto url = kivo::platform::parseUrl(text);
    return url && url->scheme == "https";
}

bool isNumber(std::string_view text) {
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size();
}

} // namespace

bool Judge::exchange(const std::string& step, const kivo::platform::UrlOutcome& outcome) {
    if (!outcome) {
        const auto& error = outcome.error();
        const bool isLate = error.kind == UrlErrorKind::timedOut;
        tell(step,
             isLate ? "there is no whole answer after " + std::to_string(patience_.count()) + " s"
                    : std::string{name(error.kind)} + (error.text.empty() ? "" : " (" + error.text + ")"),
             expectationFor(error.kind));
        return false;
    }
    if (!outcome->isProvenWhole) {
        tell(step, "the answer has no length", "a content-length, so that an answer that was cut off is noticed");
    }
    return true;
}

std::optional<Judge::Verdict> Judge::object(const std::string& step, const std::string& body) {
    struct TooMuch {};

    constexpr int deepest = 32;
    constexpr int most = 4096;
    int values = 0;
    const auto bound = [&](int depth, Json::parse_event_t event, Json&) {
        const bool isValue = event == Json::parse_event_t::value || event == Json::parse_event_t::object_start ||
                             event == Json::parse_event_t::array_start;
        values += isValue ? 1 : 0;
        if (depth > deepest || values > most) {
            throw TooMuch{};
        }
        return true;
    };
    Json json;
    try {
        json = Json::parse(body, bound, /*allow_exceptions=*/false);
    } catch (const TooMuch&) {
        tell(step, "the answer has too much JSON", "at most 32 levels and 4096 values");
        return std::nullopt;
    }
    if (!json.is_object()) {
        tell(step, json.is_discarded() ? "the answer is no JSON in UTF-8" : "the answer is " + typeOf(json),
             "a JSON object");
        return std::nullopt;
    }
    bool isSound = true;
    for (const auto* const member : {"response-type", "response-code", "response-message"}) {
        if (const auto found = json.find(member); found != json.end() && !found->is_null() && !found->is_string()) {
            tell(step, inQuotes(member) + " is " + typeOf(*found), "a text");
            isSound = false;
        }
    }
    if (!isSound) {
        return std::nullopt;
    }
    Verdict verdict{.refusedWith = "", .answer = std::move(json)};
    if (verdict.answer.value("response-type", Json{}) == "fail") {
        const auto code = verdict.answer.value("response-code", Json{});
        verdict.refusedWith = code.is_string() ? code.get<std::string>() : "";
        if (!kivo::responseCodeNamed(verdict.refusedWith)) {
            tell(step, "the refusal has the \"response-code\" " + inQuotes(verdict.refusedWith.substr(0, 100)),
                 "the name of an error");
            return std::nullopt;
        }
    }
    return verdict;
}

std::optional<Judge::Verdict> Judge::session(const std::string& step, const kivo::platform::UrlOutcome& outcome) {
    if (!exchange(step, outcome)) {
        return std::nullopt;
    }
    constexpr int good = 2;
    constexpr int hundred = 100;
    if (outcome->status / hundred != good) {
        tell(step, "the status is " + std::to_string(outcome->status), "200 to 299");
        return std::nullopt;
    }
    if (!outcome->body) {
        tell(step, "the status " + std::to_string(outcome->status) + " brings no body", "a body, if of no bytes");
        return std::nullopt;
    }
    return outcome->body->empty() ? Verdict{} : object(step, *outcome->body);
}

std::optional<Judge::Verdict> Judge::scan(const std::string& step, const kivo::platform::UrlOutcome& outcome) {
    if (!exchange(step, outcome)) {
        return std::nullopt;
    }
    auto verdict = object(step, outcome->body.value_or(""));
    if (!verdict || !verdict->refusedWith.empty()) {
        return verdict;
    }
    if (verdict->answer.value("response-type", Json{}) != "pass") {
        tell(step, "the \"response-type\" is neither \"pass\" nor \"fail\"", "one of these");
        return std::nullopt;
    }
    const auto data = verdict->answer.value("response-data", Json::object());
    const auto blob = data.is_object() ? data.value("scanResultBlob", Json("")) : Json{};
    if (!blob.is_string()) {
        tell(step, "the \"scanResultBlob\" in \"response-data\" is no text", "the text for the vendor's library");
        return std::nullopt;
    }
    return verdict;
}

void Judge::refusal(const std::string& step, const kivo::platform::UrlOutcome& outcome, const std::string& name) {
    const auto verdict = session(step, outcome);
    const auto expected = "a refusal" + (name.empty() ? "" : " with " + name);
    if (verdict && verdict->refusedWith.empty()) {
        tell(step, "the request is accepted", expected);
    } else if (verdict && !name.empty() && verdict->refusedWith != name) {
        tell(step, "the request is refused with " + verdict->refusedWith, expected);
    }
}

bool Judge::description(const Json& answer) {
    if (answer.value("response-type", Json{}) != "data") {
        tell(join, "the \"response-type\" is not \"data\"", "\"data\" of a join that is accepted");
        return false;
    }
    bool isWalkable = true;
    const auto tid = answer.value("tid", Json{});
    if (!tid.is_string() || tid.get_ref<const std::string&>().empty()) {
        tell(join, "\"tid\" is " + (tid.is_string() ? "empty" : typeOf(tid)), "a text that names the session");
        isWalkable = false;
    }
    for (const auto* const group : groups) {
        const auto found = answer.find(group);
        if (found == answer.end() || !found->is_object()) {
            tell(join, inQuotes(group) + (found == answer.end() ? " is missing" : " is " + typeOf(*found)),
                 "an object of texts");
            isWalkable = false;
            continue;
        }
        for (const auto& [name, value] : found->items()) {
            if (!value.is_string()) {
                tell(join, inQuotes(name) + " in " + inQuotes(group) + " is " + typeOf(value),
                     "a text; another type empties the whole object");
                isWalkable = false;
            }
        }
    }
    for (const auto& setting : settings) {
        if (!isWalkable) {
            break;
        }
        const auto value = answer.at(setting.group).value(setting.name, std::string{});
        const bool isSound = setting.isAddress ? isHttps(value) : isNumber(value);
        if (!answer.at(setting.group).contains(setting.name)) {
            if (setting.isRequired) {
                tell(join, inQuotes(setting.name) + " is missing in " + inQuotes(setting.group), "an https address");
                isWalkable = false;
            }
        } else if (!isSound) {
            tell(join, inQuotes(setting.name) + " in " + inQuotes(setting.group) + " is no such text",
                 setting.isAddress ? "an https address" : "a decimal number");
            isWalkable = isWalkable && !setting.isRequired;
        }
    }
    return isWalkable;
}

} // namespace simulation
