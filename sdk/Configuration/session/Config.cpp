#include "Configuration/session/Config.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/StoredSession.hpp"

namespace kivo {
namespace {

std::optional<std::string> faceMapSetting(std::string_view key) {
    const auto answer = storedJoinAnswer();
    if (!answer) {
        return std::nullopt;
    }
    const auto session = ActivationResponse::decode(*answer);
    if (!session) {
        return "";
    }
    log::debug("Config", [&] { return session->encode(); });
    return settingIn(session->idpFaceMap, key);
}

} // namespace

std::string Config::facemapBaseURL() {
    return faceMapSetting(KivoResponseKeys::facemapEndpoint).value_or("");
}

std::string Config::ocrIDScanBaseURL() {
    return faceMapSetting(KivoResponseKeys::idScanEndpoint).value_or("");
}

std::optional<std::string> Config::DeviceKeyIdentifier() {
    return faceMapSetting(KivoResponseKeys::faceMapDeviceKey);
}

} // namespace kivo
