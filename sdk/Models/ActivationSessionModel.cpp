#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "platform/json/Cursor.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string>

namespace kivo {
namespace {

using Keys = KivoResponseKeys;

constexpr std::string_view decodeFunction = "init(from:)";

using Settings = ActivationResponse::Settings;
using Response = ActivationResponse;

/// Why a member keeps its default.
using Fault = std::optional<std::string>;

/// A member of the answer, which is a text or settings. The name is the property's in the log.
struct Property {
    std::string_view key;
    std::string_view name;
    std::string Response::* text = nullptr;
    Settings Response::* settings = nullptr;
};

constexpr std::array<Property, 7> properties{{
    {.key = Keys::responseType, .name = "responseType", .text = &Response::responseType},
    {.key = Keys::responseCode, .name = "responseCode", .text = &Response::responseCode},
    {.key = Keys::tid, .name = "tId", .text = &Response::tId},
    {.key = Keys::idpConfig, .name = "idpConfig", .settings = &Response::idpConfig},
    {.key = Keys::appConfig, .name = "appConfig", .settings = &Response::appConfig},
    {.key = Keys::idpBiodata, .name = "idpBiodata", .settings = &Response::idpBiodata},
    {.key = Keys::idpFaceMap, .name = "idpFaceMap", .settings = &Response::idpFaceMap},
}};

std::string expected(std::string_view what, std::optional<json::Kind> found) {
    return "expected " + std::string{what} + ", found " + std::string{name(found.value_or(json::Kind::null))};
}

Fault readText(json::Cursor& answer, std::string& to) {
    to.clear();
    if (const auto found = answer.kind(); found != json::Kind::text) {
        answer.skip();
        return expected("a text", found);
    }
    to = answer.text().value_or("");
    return std::nullopt;
}

Fault readSettings(json::Cursor& answer, Settings& to) {
    to.clear();
    if (const auto found = answer.kind(); found != json::Kind::object) {
        answer.skip();
        return expected("an object of texts", found);
    }
    // Of members with one name the last counts, also where an earlier one is no text.
    std::map<std::string, json::Kind, std::less<>> others;
    auto place = to.end();
    answer.enter();
    while (const auto key = answer.member()) {
        const auto found = answer.kind();
        if (found == json::Kind::text) {
            // A service writes most settings in an order in which each has its place behind the one before.
            const auto text = answer.text().value_or("");
            const auto before = to.size();
            place = to.emplace_hint(place, *key, text);
            if (to.size() == before) {
                place->second = text;
            }
            ++place;
            if (!others.empty()) {
                others.erase(std::string{*key});
            }
        } else {
            others.insert_or_assign(std::string{*key}, found.value_or(json::Kind::null));
            answer.skip();
        }
    }
    if (others.empty()) {
        return std::nullopt;
    }
    to.clear();
    const auto& [key, kind] = *others.begin();
    return "at \"" + key + "\": " + expected("a text", kind);
}

json::Object objectOf(const ActivationResponse::Settings& settings) {
    json::Object object;
    for (const auto& [key, setting] : settings) {
        object.set(key, setting);
    }
    return object;
}

} // namespace

std::optional<ActivationResponse> ActivationResponse::decode(std::string_view text) {
    json::Cursor answer{text};
    if (answer.kind() != json::Kind::object) {
        return std::nullopt;
    }
    std::optional<ActivationResponse> session{std::in_place};
    std::array<Fault, properties.size()> faults;
    answer.enter();
    while (const auto key = answer.member()) {
        const auto* const property = std::ranges::find(properties, *key, &Property::key);
        if (property == properties.end()) {
            answer.skip();
            continue;
        }
        auto& fault = faults.at(static_cast<std::size_t>(property - properties.begin()));
        fault = property->text != nullptr ? readText(answer, *session.*property->text)
                                          : readSettings(answer, *session.*property->settings);
    }
    if (!answer.end()) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < faults.size(); ++i) {
        if (faults[i]) {
            log::debug(decodeFunction,
                       [&] { return "Error mapping " + std::string{properties[i].name} + " " + *faults[i]; });
        }
    }
    return session;
}

std::string ActivationResponse::encode() const {
    json::Object object;
    object.set(std::string{Keys::responseType}, responseType);
    object.set(std::string{Keys::responseCode}, responseCode);
    object.set(std::string{Keys::tid}, tId);
    object.set(std::string{Keys::idpConfig}, objectOf(idpConfig));
    object.set(std::string{Keys::appConfig}, objectOf(appConfig));
    object.set(std::string{Keys::idpBiodata}, objectOf(idpBiodata));
    object.set(std::string{Keys::idpFaceMap}, objectOf(idpFaceMap));
    return json::writeRepaired(object);
}

bool ActivationResponse::isDocumentListAvailable(const ActivationResponse* sessionObj) {
    return sessionObj != nullptr && settingIn(sessionObj->appConfig, KivoResponseKeys::documentList) == "true";
}

const std::string& settingIn(const ActivationResponse::Settings& settings, std::string_view key) {
    static const std::string missing;
    const auto setting = settings.find(key);
    return setting == settings.end() ? missing : setting->second;
}

} // namespace kivo
