#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "platform/json/Json.hpp"

#include <expected>
#include <string>
#include <utility>

namespace kivo {
namespace {

using Keys = KivoResponseKeys;

constexpr std::string_view decodeFunction = "init(from:)";

template <class T>
using Decoded = std::expected<T, std::string>;

Decoded<std::string> textIn(json::Value& value) {
    if (auto* const text = value.text()) {
        return std::move(*text);
    }
    return std::unexpected{"expected a text, found " + std::string{name(value.kind())}};
}

Decoded<ActivationResponse::Settings> settingsIn(json::Value& value) {
    if (value.kind() != json::Kind::object) {
        return std::unexpected{"expected an object of texts, found " + std::string{name(value.kind())}};
    }
    ActivationResponse::Settings settings;
    for (auto& [key, setting] : std::move(value).takeMembers()) {
        auto text = textIn(setting);
        if (!text) {
            return std::unexpected{"at \"" + key + "\": " + text.error()};
        }
        settings.emplace(std::move(key), std::move(*text));
    }
    return settings;
}

template <class T>
void decodeMember(json::Value& object, std::string_view key, Decoded<T> (&decode)(json::Value&),
                  std::string_view property, T& value) {
    auto* const member = object.find(key);
    if (member == nullptr) {
        return;
    }
    if (auto decoded = decode(*member)) {
        value = std::move(*decoded);
    } else {
        log::debug(decodeFunction, [&] { return "Error mapping " + std::string{property} + " " + decoded.error(); });
    }
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
    auto answer = json::read(text);
    return answer ? sessionIn(std::move(*answer)) : std::nullopt;
}

std::optional<ActivationResponse> sessionIn(json::Value answer) {
    if (answer.kind() != json::Kind::object) {
        return std::nullopt;
    }
    ActivationResponse session;
    decodeMember(answer, Keys::responseType, textIn, "responseType", session.responseType);
    decodeMember(answer, Keys::responseCode, textIn, "responseCode", session.responseCode);
    decodeMember(answer, Keys::tid, textIn, "tId", session.tId);
    decodeMember(answer, Keys::idpConfig, settingsIn, "idpConfig", session.idpConfig);
    decodeMember(answer, Keys::appConfig, settingsIn, "appConfig", session.appConfig);
    decodeMember(answer, Keys::idpBiodata, settingsIn, "idpBiodata", session.idpBiodata);
    decodeMember(answer, Keys::idpFaceMap, settingsIn, "idpFaceMap", session.idpFaceMap);
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
