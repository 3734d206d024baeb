#include "services/acquisition/facemap/facetec/FaceTecLibrary.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/SessionKeys.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace kivo {
namespace {

struct StatusRow {
    int status;
    ResponseCode code;
};

using enum ResponseCode;

constexpr std::array faceScanRows{
    StatusRow{1, SESSION_UNSUCCESSFUL},
    StatusRow{2, CANCELLED},
    StatusRow{4, CAMERA_PERMISSION_ERROR},
    StatusRow{5, CONTEXT_SWITCH},
    StatusRow{6, LANDSCAPE_MODE_NOT_ALLOWED},
    StatusRow{7, REVERSE_PORTRAIT_NOT_ALLOWED},
    StatusRow{8, TIMEOUT},
    StatusRow{9, FACE_SCAN_LOW_MEMORY},
    StatusRow{12, ENCRYPTION_KEY_INVALID},
    StatusRow{13, MISSING_GUIDANCE_IMAGES},
    StatusRow{14, CAMERA_INITIALIZATION_ISSUE},
    StatusRow{15, LOCKED_OUT},
    StatusRow{16, UNKNOWN_INTERNAL_ERROR},
    StatusRow{17, USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT},
    StatusRow{18, STATUS_SESSION_EXPIRED},
};

constexpr std::array idScanRows{
    StatusRow{2, CANCELLED},
    StatusRow{3, TIMEOUT},
    StatusRow{4, CONTEXT_SWITCH},
    StatusRow{5, CAMERA_PERMISSION_DENIED},
    StatusRow{6, TIMEOUT},
    StatusRow{7, LANDSCAPE_MODE_NOT_ALLOWED},
    StatusRow{8, REVERSE_PORTRAIT_NOT_ALLOWED},
    StatusRow{9, CANCELLED},
    StatusRow{11, CAMERA_PERMISSION_DENIED},
};

ResponseCode lookUp(std::span<const StatusRow> rows, int status, ResponseCode otherwise) {
    const auto row = std::ranges::find(rows, status, &StatusRow::status);
    return row == rows.end() ? otherwise : row->code;
}

} // namespace

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
            const std::string outcome{isReady ? "true" : "false"};
            return (isProduction ? "faceTec initilization 001 ----- " : "faceTec in Development Mode 001 ----- ") +
                   outcome;
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

std::optional<ResponseCode> faceScanFailure(int status) {
    return status == 0 ? std::nullopt : std::optional{lookUp(faceScanRows, status, UNKNOWN_ERROR)};
}

ResponseCode idScanFailure(int status) {
    return lookUp(idScanRows, status, OCR_SCAN_FAILED);
}

} // namespace kivo
