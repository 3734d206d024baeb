#include "Models/ActivationSessionModel.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"

#include <nlohmann/json.hpp>

#include <string>

namespace kivo {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view decodeFunction = "init(from:)";

template <class Value>
void decodeMember(const Json& object, std::string_view key, std::string_view property, Value& value) {
    const auto member = object.find(key);
    if (member == object.end()) {
        return;
    }
    try {
        value = member->template get<Value>();
    } catch (const Json::exception& error) {
        log::debug(decodeFunction,
                   [&] { return "Error mapping " + std::string{property} + " " + std::string{error.what()}; });
    }
}

} // namespace

std::optional<ActivationResponse> ActivationResponse::decode(std::string_view text) {
    const auto object = Json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    using Keys = KivoResponseKeys;
    ActivationResponse session;
    decodeMember(object, Keys::responseType, "responseType", session.responseType);
    decodeMember(object, Keys::responseCode, "responseCode", session.responseCode);
    decodeMember(object, Keys::tid, "tId", session.tId);
    decodeMember(object, Keys::idpConfig, "idpConfig", session.idpConfig);
    decodeMember(object, Keys::appConfig, "appConfig", session.appConfig);
    decodeMember(object, Keys::idpBiodata, "idpBiodata", session.idpBiodata);
    decodeMember(object, Keys::idpFaceMap, "idpFaceMap", session.idpFaceMap);
    return session;
}

std::string ActivationResponse::encode() const {
    using Keys = KivoResponseKeys;
    Json object = Json::object();
    object[std::string{Keys::responseType}] = responseType;
    object[std::string{Keys::responseCode}] = responseCode;
    object[std::string{Keys::tid}] = tId;
    object[std::string{Keys::idpConfig}] = idpConfig;
    object[std::string{Keys::appConfig}] = appConfig;
    object[std::string{Keys::idpBiodata}] = idpBiodata;
    object[std::string{Keys::idpFaceMap}] = idpFaceMap;
    return object.dump();
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
