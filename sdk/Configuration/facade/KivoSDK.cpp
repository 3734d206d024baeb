#include "Configuration/logging/Log.hpp"
#include "Configuration/settings/Settings.hpp"
#include "Models/InterfaceVersion.hpp"
#include "NetworkManager/Attempts.hpp"
#include "impl/SessionAPI.hpp"

#include <kivo/Completions.hpp>
#include <kivo/KivoAPIProvider.hpp>
#include <kivo/KivoSDK.hpp>
#include <kivo/SdkVersions.hpp>
#include <kivo/ZorFrameworkWrapper.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/Text.hpp>

#include <algorithm>
#include <optional>
#include <utility>

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

std::shared_ptr<KivoAPI> KivoSDK::join(JoinRequest request, IdvCompletion response) {
    if (request.deployment) {
        Deployment::install(std::move(*request.deployment));
    }
    auto session = load(request.key, request.version.empty() ? SdkVersions::all().back() : request.version);
    if (!session) {
        if (const auto answer = onMainQueue(std::move(response))) {
            answer(std::unexpected{ResponseCode::INVALID_JOIN_SESSION});
        }
        return nullptr;
    }
    session->setAnswerQueue(platform::services().mainQueue);
    session->join(std::move(request.activationCode), std::make_shared<AcquisitionConfig>(std::move(request.config)),
                  std::move(response));
    return session;
}

LogLevel KivoSDK::logLevel() {
    return Settings::shared().logLevel;
}

void KivoSDK::setLogLevel(LogLevel level) {
    Settings::shared().logLevel = level;
}

void KivoSDK::setLogSink(LogSink sink) {
    Settings::shared().setLogSink(std::move(sink));
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

std::span<const std::string_view> SdkVersions::all() {
    static constexpr auto codes = [] {
        std::array<std::string_view, allInterfaceVersions.size()> all{};
        std::ranges::transform(allInterfaceVersions, all.begin(),
                               [](InterfaceVersion version) { return namesOf(version).code; });
        return all;
    }();
    return codes;
}

std::string SdkVersions::getPreciseVersion(std::string_view fromVersion) {
    return std::string{text::firstCharacters(fromVersion, 2).value_or("Invalid sdk version!")};
}

std::shared_ptr<KivoAPIProvider> ZorFrameworkWrapper::load(std::string_view key, std::string_view version) {
    auto loaded = KivoSDK::loadForProvider(key, version);
    setApiProvider(loaded);
    return loaded;
}

std::shared_ptr<KivoAPIProvider> ZorFrameworkWrapper::apiProvider() const {
    const std::scoped_lock lock{mutex_};
    return apiProvider_;
}

void ZorFrameworkWrapper::setApiProvider(std::shared_ptr<KivoAPIProvider> apiProvider) {
    const std::scoped_lock lock{mutex_};
    std::swap(apiProvider_, apiProvider);
}

std::shared_ptr<AcquisitionConfig> ZorFrameworkWrapper::config() const {
    const std::scoped_lock lock{mutex_};
    return config_;
}

void ZorFrameworkWrapper::setConfig(std::shared_ptr<AcquisitionConfig> config) {
    const std::scoped_lock lock{mutex_};
    std::swap(config_, config);
}

} // namespace kivo
