#include "services/acquisition/nfc/innovator/DocumentReading.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/NetworkManager.hpp"

#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kivo {
namespace {

using platform::readid::DocumentType;
using platform::readid::FailureReason;
using platform::readid::NFCWithAccessControlFlow;

constexpr std::string_view setUpFunction = "setUpReadIDUIFlow()";

std::shared_ptr<platform::readid::UIResources> resourcesFor(const ThemeCustomization* theme) {
    auto resources = ThemeCustomization::passportScanViewCustomization();
    resources->customBundle = theme != nullptr ? theme->appBundle : nullptr;
    if (resources->customStringTableName) {
        log::info(setUpFunction, [&] { return "Using strings table name " + *resources->customStringTableName; });
    } else {
        log::line(LogLevel::warning, setUpFunction, "No table name found for scan localization");
    }
    if (theme != nullptr) {
        resources->buttonCornerRadius = theme->primaryButtonCornerRadius;
        resources->buttonFont = theme->primaryButtonFont;
    }
    return resources;
}

struct FailureRow {
    FailureReason reason;
    ResponseCode withDocumentList;
    ResponseCode withoutDocumentList;
};

constexpr FailureRow always(FailureReason reason, ResponseCode code) {
    return {.reason = reason, .withDocumentList = code, .withoutDocumentList = code};
}

constexpr std::array failureRows{
    always(FailureReason::backgroundTimeout, ResponseCode::BACKGROUND_TIMEOUT),
    always(FailureReason::sessionExpired, ResponseCode::SESSION_EXPIRED),
    always(FailureReason::authorisationError, ResponseCode::AUTHORISATION_ERROR),
    always(FailureReason::serverSessionError, ResponseCode::SERVER_SESSION_ERROR),
    always(FailureReason::sslError, ResponseCode::SSL_ERROR),
    always(FailureReason::nfcAccessControlError, ResponseCode::NFC_ACCESS_CONTROL_ERROR),
    always(FailureReason::connectionError, ResponseCode::CONNECTION_ERROR),
    always(FailureReason::tooManyRequestsError, ResponseCode::TOO_MANY_REQUESTS),
    always(FailureReason::nfcError, ResponseCode::NFC_ERROR),
    FailureRow{FailureReason::userCancelled, ResponseCode::USER_CANCELLED, ResponseCode::CANCELLED_BY_USER},
    always(FailureReason::cameraPermissionDenied, ResponseCode::CAMERA_PERMISSION_DENIED),
    always(FailureReason::noChip, ResponseCode::NO_CHIP),
    always(FailureReason::unsupportedDocument, ResponseCode::UNSUPPORTED_DOCUMENT),
    FailureRow{FailureReason::backNavigation, ResponseCode::BACK_NAVIGATION, ResponseCode::CANCELLED_BY_USER},
    always(FailureReason::wrongDocumentType, ResponseCode::WRONG_DOCUMENT_TYPE),
    always(FailureReason::vizCaptureTimeout, ResponseCode::VIZ_CAPTURE_TIMEOUT),
};

} // namespace

std::shared_ptr<NFCWithAccessControlFlow> makeReadingFlow(const ActivationResponse* session,
                                                          const ThemeCustomization* theme) {
    const auto setting = [session](std::string_view key) {
        return session != nullptr ? settingIn(session->idpBiodata, key) : std::string{};
    };
    auto flow = std::make_shared<NFCWithAccessControlFlow>();
    flow->allowedDocumentTypes = {DocumentType::passport, DocumentType::identityCardTD2, DocumentType::identityCardTD1};
    flow->uiResources = resourcesFor(theme);
    flow->baseUrl = setting(KivoResponseKeys::biodataProxy);
    flow->accessKey = setting(KivoResponseKeys::biodataAccessKey);
    flow->instructionsPlayCount = 1;
    flow->shouldOnlyShowInstructionsOnFirstUse = false;
    flow->shouldShowDocumentSelection = false;
    flow->allowSkipReadingAfterAttempts = theme != nullptr ? theme->allowNFCSkipReadingAfterAttempts : 2;
    flow->shouldUsePinning = true;
    if (const auto key = setting(KivoResponseKeys::biodataEncryptKey); !key.empty()) {
        flow->applicationLevelEncryptionPins = {key};
    } else {
        log::info(setUpFunction, "Biodata encrypt key not found");
    }
    flow->nfcResultScreenConfiguration.nfcResultDataMode = platform::readid::NFCResultDataMode::none;
    flow->vizResultScreenConfiguration.vizResultDataMode = platform::readid::VIZResultDataMode::none;
    flow->shouldShowVIZResult = false;
    flow->shouldShowNFCResult = false;
    flow->shouldPlayShutterSound = false;
    return flow;
}

ResponseCode readingFailureCode(FailureReason reason, bool isDocListAvailable) {
    const auto* const row = std::ranges::find(failureRows, reason, &FailureRow::reason);
    if (row == failureRows.end()) {
        return ResponseCode::UNKNOWN_ERROR;
    }
    return isDocListAvailable ? row->withDocumentList : row->withoutDocumentList;
}

void sendDocumentReadNotice(const std::string& endpoint, const std::string& sessionId,
                            std::function<void(const NoticeOutcome& outcome)> completion) {
    const auto session = storedSession();
    json::ObjectText body;
    body.add("opaqueId", session ? session->tId : std::string{}).add("sessionId", sessionId);
    // The callback moves the completion away, so that the completion is not destroyed on the transport's thread.
    const auto held = std::make_shared<decltype(completion)>(std::move(completion));
    // The document screen waits for the answer, so this notice must not queue behind notices without a waiting caller.
    NetworkManager::shared().sendRequest(endpoint, std::move(body), [held](NetworkManager::Answer answer) {
        auto outcome = answer ? NoticeOutcome{std::move(*answer)}
                              : std::unexpected{codeOf(answer.error().cause, ResponseCode::SERVER_ERROR)};
        platform::services().mainQueue->async([run = std::move(*held), outcome = std::move(outcome)] { run(outcome); });
    });
}

} // namespace kivo
