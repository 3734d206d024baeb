#include "services/acquisition/facemap/facetec/FaceTecStart.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/StoredSession.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>

#include <string>
#include <string_view>
#include <utility>

namespace kivo {

void startFaceTec(std::function<void(bool isReady)> completion) {
    constexpr std::string_view function = "initializeFaceTec()";
    const auto& vendor = platform::services().faceTec;
    if (!vendor) {
        log::error(function, "There is no face scan library: put an adapter to it into platform::Services::faceTec "
                             "and install it before the first call to the SDK.");
        completion(false);
        return;
    }
    const auto session = storedSession();
    const auto setting = [&](std::string_view key) {
        return session ? settingIn(session->idpFaceMap, key) : std::string{};
    };
    const auto deviceKey = setting(KivoResponseKeys::faceMapDeviceKey);
    const auto encryptionKey = setting(KivoResponseKeys::faceMapPublicKey);
    const auto deployment = Deployment::current();
    const bool isProduction = deployment.faceTecProduction;
    auto tell = [function, isProduction, completion = std::move(completion)](bool isReady) {
        log::info(function, [&] {
            return std::string{isProduction ? "faceTec initilization 001 ----- "
                                            : "faceTec in Development Mode 001 ----- "} +
                   (isReady ? "true" : "false");
        });
        completion(isReady);
    };
    if (isProduction) {
        vendor->initializeInProductionMode(deployment.faceTecProductionKey, deviceKey, encryptionKey, std::move(tell));
    } else {
        vendor->initializeInDevelopmentMode(deviceKey, encryptionKey, std::move(tell));
    }
}

void chooseFaceTecLanguage() {
    if (const auto& vendor = platform::services().faceTec) {
        vendor->setLanguage("Zoom");
    }
}

std::optional<std::string> storedScanToken() {
    const auto session = storedSession();
    if (!session || !session->idpFaceMap.contains(KivoResponseKeys::faceMapToken)) {
        return std::nullopt;
    }
    return settingIn(session->idpFaceMap, KivoResponseKeys::faceMapToken);
}

} // namespace kivo
