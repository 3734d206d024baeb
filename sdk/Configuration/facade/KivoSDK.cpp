#include "Configuration/logging/Log.hpp"
#include "Configuration/settings/Settings.hpp"
#include "Models/InterfaceVersion.hpp"
#include "NetworkManager/Attempts.hpp"
#include "impl/SessionAPI.hpp"

#include <kivo/KivoAPIProvider.hpp>
#include <kivo/KivoSDK.hpp>
#include <kivo/SdkVersions.hpp>

#include <algorithm>
#include <optional>

namespace kivo {
namespace {

constexpr const char* invalidVersion = "Invalid sdk version!";

std::optional<InterfaceVersion> selected(std::string_view version) {
    Settings::shared().setRequestedSDKVersion(std::string{version});
    const auto asked = SdkVersions::getPreciseVersion(version);
    const auto found =
        std::ranges::find(allInterfaceVersions, asked, [](InterfaceVersion each) { return namesOf(each).code; });
    if (found == allInterfaceVersions.end()) {
        log::print(invalidVersion);
        return std::nullopt;
    }
    return *found;
}

void setDeviceCode(SessionAPI& session, InterfaceVersion version, std::string_view key) {
    session.setDeviceCode(std::string{namesOf(version).deviceCodePrefix} + std::string{key});
}

} // namespace

std::shared_ptr<KivoAPI> KivoSDK::load(std::string_view key, std::string_view version) {
    const auto found = selected(version);
    if (!found) {
        return nullptr;
    }
    const auto& session = SessionAPI::shared(*found);
    setDeviceCode(*session, *found, key);
    return session;
}

std::shared_ptr<KivoAPIProvider> KivoSDK::loadForProvider(std::string_view key, std::string_view version) {
    auto session = load(key, version);
    return session ? std::make_shared<KivoAPIProvider>(std::move(session)) : nullptr;
}

LogLevel KivoSDK::logLevel() {
    return Settings::shared().logLevel;
}

void KivoSDK::setLogLevel(LogLevel level) {
    Settings::shared().logLevel = level;
}

std::string KivoSDK::VERSION() {
    return Settings::shared().version();
}

void KivoSDK::setVERSION(std::string version) {
    Settings::shared().setVersion(std::move(version));
}

std::string KivoSDK::requestedSDKVersion() {
    return Settings::shared().requestedSDKVersion();
}

void KivoSDK::setRequestedSDKVersion(std::string version) {
    Settings::shared().setRequestedSDKVersion(std::move(version));
}

bool KivoSDK::shouldApplyRetryLimit() {
    return Attempts::shared().shouldApplyRetryLimit();
}

void KivoSDK::setShouldApplyRetryLimit(bool apply) {
    Attempts::shared().setShouldApplyRetryLimit(apply);
}

} // namespace kivo
