#include "services/acquisition/facemap/facetec/EnrollmentProcessor.hpp"

#include "Configuration/session/Config.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/ScanRequest.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <optional>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;
using platform::FaceTecFaceScanResultCallback;
using platform::FaceTecSessionResult;

namespace {

/// Absent where the session names no endpoint, or the library gives no pictures.
std::optional<platform::UrlRequest> enrollmentRequest(const FaceTecSessionResult& result,
                                                      const std::string& externalDatabaseRefID) {
    const auto endpoint = Config::facemapBaseURL();
    const auto* const auditTrailImage = firstOf(result.auditTrailCompressedBase64());
    const auto* const lowQualityAuditTrailImage = firstOf(result.lowQualityAuditTrailCompressedBase64());
    if (endpoint.empty() || auditTrailImage == nullptr || lowQualityAuditTrailImage == nullptr) {
        return std::nullopt;
    }
    return scanRequest(endpoint + "/enrollment-3d", scanUserAgent(result.sessionId()),
                       scanBody({{"faceScan", textOf(result.faceScanBase64())},
                                 {"auditTrailImage", auditTrailImage},
                                 {"lowQualityAuditTrailImage", lowQualityAuditTrailImage},
                                 {"externalDatabaseRefID", &externalDatabaseRefID}}));
}

} // namespace

EnrollmentProcessor::EnrollmentProcessor(std::weak_ptr<FaceScanScreen> fromViewController)
    : ScanProcessor{{.function = "processSessionWhileFaceTecSDKWaits(sessionResult:faceScanResultCallback:)",
                     .answered = "Enrollment process response ",
                     .accepted = "Face scan session didSucceed = true on server",
                     .refused = "Face scan session didSucceed = false on server"}}
    , fromViewController_{std::move(fromViewController)} {}

std::shared_ptr<platform::ViewController> EnrollmentProcessor::createSessionVC(platform::FaceTec& vendor,
                                                                               const std::string& sessionToken) {
    return vendor.createSessionVC(std::static_pointer_cast<EnrollmentProcessor>(shared_from_this()), sessionToken);
}

void EnrollmentProcessor::processSessionWhileFaceTecSDKWaits(std::shared_ptr<FaceTecSessionResult> sessionResult,
                                                             std::shared_ptr<FaceTecFaceScanResultCallback> callback) {
    const auto from = fromViewController_.lock();
    if (from) {
        from->setLatestSessionResult(sessionResult);
    }
    if (sessionResult->status() != 0) {
        cancelUpload();
        callback->onFaceScanResultCancel();
        return;
    }
    auto request = enrollmentRequest(*sessionResult, from ? from->latestExternalDatabaseRefID() : "");
    if (!request) {
        uploadDidFail(ResponseCode::UNKNOWN_ERROR);
        callback->onFaceScanResultCancel();
        return;
    }
    upload(std::move(*request),
           {.proceedToNextStep =
                [callback](const std::string& blob) { return callback->onFaceScanResultProceedToNextStep(blob); },
            .cancel = [callback] { callback->onFaceScanResultCancel(); },
            .uploadProgress = [callback](float fraction) { callback->onFaceScanUploadProgress(fraction); }});
    if (Attempts::shared().shouldApplyRetryLimit()) {
        countAttempt(storedSession());
    }
    explainSlowUpload(callback);
}

void EnrollmentProcessor::explainSlowUpload(const std::shared_ptr<FaceTecFaceScanResultCallback>& callback) const {
    platform::services().mainQueue->asyncAfter(
        6s, [pending = uploadUnderWay(), waiting = std::weak_ptr{callback}, screen = fromViewController_] {
            const auto library = waiting.lock();
            if (library && !pending.expired()) {
                library->onFaceScanUploadMessageOverride(
                    {.text = themeText(screen.lock(), &ThemeCustomization::faceScanUploadMessage)});
            }
        });
}

void EnrollmentProcessor::uploadDidFail(ResponseCode code) {
    if (const auto from = fromViewController_.lock()) {
        from->scanDidFail(code);
    }
}

void EnrollmentProcessor::serverDidRefuse(std::string_view answer) {
    if (const auto from = fromViewController_.lock()) {
        from->handleServerFailure(answer);
    }
}

} // namespace kivo
