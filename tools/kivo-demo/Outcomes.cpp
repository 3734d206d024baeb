#include "Outcomes.hpp"

#include <kivo/platform/ReadID.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <algorithm>
#include <array>
#include <sstream>

namespace demo {
namespace {

namespace face = kivo::simulator::faceScanStatus;
namespace idCard = kivo::simulator::idScanStatus;
using kivo::platform::readid::FailureReason;

constexpr ScreenOutcome ofDocument(std::string_view code, FailureReason reason, bool isLeaving = false) {
    return {.screen = "document", .code = code, .status = static_cast<int>(reason), .isLeaving = isLeaving};
}

constexpr std::array outcomes{
    ofDocument("USER_CANCELLED", FailureReason::userCancelled, /*isLeaving=*/true),
    ofDocument("BACK_NAVIGATION", FailureReason::backNavigation, /*isLeaving=*/true),
    ofDocument("NO_CHIP", FailureReason::noChip),
    ofDocument("NFC_ERROR", FailureReason::nfcError),
    ofDocument("NFC_ACCESS_CONTROL_ERROR", FailureReason::nfcAccessControlError),
    ofDocument("WRONG_DOCUMENT_TYPE", FailureReason::wrongDocumentType),
    ofDocument("UNSUPPORTED_DOCUMENT", FailureReason::unsupportedDocument),
    ofDocument("VIZ_CAPTURE_TIMEOUT", FailureReason::vizCaptureTimeout),
    ofDocument("BACKGROUND_TIMEOUT", FailureReason::backgroundTimeout),
    ofDocument("CAMERA_PERMISSION_DENIED", FailureReason::cameraPermissionDenied),
    ScreenOutcome{"face", "SESSION_UNSUCCESSFUL", face::unsuccessful},
    ScreenOutcome{"face", "CANCELLED", face::cancelled, /*isLeaving=*/true},
    ScreenOutcome{"face", "CAMERA_PERMISSION_ERROR", face::cameraRefused},
    ScreenOutcome{"face", "CONTEXT_SWITCH", face::contextSwitch},
    ScreenOutcome{"face", "LANDSCAPE_MODE_NOT_ALLOWED", face::landscapeMode},
    ScreenOutcome{"face", "TIMEOUT", face::timeout},
    ScreenOutcome{"face", "LOCKED_OUT", face::lockedOut},
    ScreenOutcome{"idcard", "OCR_SCAN_FAILED", idCard::unsuccessful},
    ScreenOutcome{"idcard", "CANCELLED", idCard::cancelled},
    ScreenOutcome{"idcard", "TIMEOUT", idCard::timeout},
    ScreenOutcome{"idcard", "CONTEXT_SWITCH", idCard::contextSwitch},
    ScreenOutcome{"idcard", "CAMERA_PERMISSION_DENIED", idCard::cameraRefused},
};

} // namespace

std::span<const ScreenOutcome> screenOutcomes() {
    return outcomes;
}

std::expected<std::vector<ScreenOutcome>, std::string> parseOutcomes(const std::string& list) {
    std::vector<ScreenOutcome> wanted;
    std::istringstream items{list};
    for (std::string item; std::getline(items, item, ',');) {
        const auto* const found = std::ranges::find_if(outcomes, [&](const ScreenOutcome& each) {
            return item == std::string{each.screen}.append("=").append(each.code);
        });
        if (found == outcomes.end()) {
            return std::unexpected{"--outcome takes SCREEN=CODE as listed below, not \"" + item + "\""};
        }
        wanted.push_back(*found);
    }
    return wanted;
}

} // namespace demo
