#include "Configuration/session/StoredSession.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/KeychainWrapper.hpp"
#include "platform/json/Json.hpp"

#include <kivo/platform/Keychain.hpp>
#include <kivo/platform/Text.hpp>

namespace kivo {
namespace {

bool store(std::string_view value, std::string_view item) {
    if (KeychainWrapper::standard().set(std::string{value}, std::string{item})) {
        return true;
    }
    log::error("set(_:forKey:withAccessibility:)", [&] {
        return "The item \"" + std::string{item} + "\" could not be stored; see the keychain's diagnostics.";
    });
    return false;
}

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

std::optional<std::string> storedJoinAnswer() {
    auto answer = KeychainWrapper::standard().data(std::string{StoredItems::joinAnswer});
    return answer && text::isUtf8(*answer) ? std::move(answer) : std::nullopt;
}

std::optional<ActivationResponse> storedSession() {
    auto answer = storedJoinAnswer();
    if (!answer) {
        return std::nullopt;
    }
    auto session = ActivationResponse::decode(*answer);
    platform::wipe(*answer);
    return session;
}

bool storeJoinAnswer(std::string_view answer) {
    if (const auto read = json::read(answer); !read && read.error().isBeyondLimits()) {
        log::error("getJoin(codeValue:completion:)", "The join answer is too large or too deep to be read.");
        return false;
    }
    return store(answer, StoredItems::joinAnswer);
}

bool storeActivationCode(std::string_view activationCode) {
    return store(activationCode, StoredItems::activationCode);
}

bool removeStoredJoinAnswer() {
    auto answer = KeychainWrapper::standard().data(std::string{StoredItems::joinAnswer});
    const bool isText = !answer || text::isUtf8(*answer);
    if (answer) {
        platform::wipe(*answer);
    }
    if (!isText) {
        return false;
    }
    // Removes even when no answer was read, because a locked or damaged store seems to hold no answer.
    using enum KeychainWrapper::Removal;
    const auto removal = KeychainWrapper::standard().remove(std::string{StoredItems::joinAnswer});
    if (removal == failed) {
        log::error("reset()", "The session could not be deleted and is still stored; see the keychain's diagnostics.");
    }
    return removal == done;
}

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
