#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/ScanUpload.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::FaceTecFaceScanResultCallback;
using platform::FaceTecIDScanResult;
using platform::FaceTecIDScanResultCallback;
using platform::FaceTecSessionResult;

/// A text of the screen's theme; empty without a theme.
std::string themeText(const std::shared_ptr<ScanScreen>& screen, std::string ThemeCustomization::* text) {
    return screen && screen->themeObj ? (*screen->themeObj).*text : std::string{};
}

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

platform::UrlRequest idScanRequest(const std::string& endpoint, const FaceTecIDScanResult& result) {
    const auto userAgent = scanUserAgent(result.sessionId());
    auto request = scanRequest(endpoint + "/idscan-only", userAgent,
                               scanBody({{"idScan", textOf(result.idScanBase64())},
                                         {"idScanFrontImage", firstOf(result.frontImagesCompressedBase64())},
                                         {"idScanBackImage", firstOf(result.backImagesCompressedBase64())}}));
    request.headers.emplace_back("X-User-Agent", userAgent);
    return request;
}

} // namespace

bool ScanProcessor::begin(const std::string& sessionToken) {
    const auto& vendor = platform::services().faceTec;
    const auto vendorScreen = vendor ? createSessionVC(*vendor, sessionToken) : nullptr;
    const auto from = screen();
    if (!vendorScreen || !from) {
        return false;
    }
    from->present(vendorScreen, /*animated=*/true);
    return true;
}

void ScanProcessor::libraryIsDone() {
    auto accepted = std::exchange(accepted_, {});
    if (std::exchange(upload_, nullptr)) {
        uploadDidFail(ResponseCode::UNKNOWN_ERROR);
    }
    if (const auto from = screen()) {
        from->onComplete(std::move(accepted.due));
    }
}

void ScanProcessor::upload(platform::UrlRequest request, WaitingLibrary library) {
    accepted_ = {};
    const auto shared = std::make_shared<const WaitingLibrary>(std::move(library));
    ScanUpload::Listener listener{.progress = [shared](float sent) { shared->uploadProgress(sent); },
                                  .completion =
                                      [weak = weak_from_this(), shared](platform::UrlOutcome outcome) {
                                          if (const auto self = weak.lock()) {
                                              self->uploadDidEnd(std::move(outcome), *shared);
                                          }
                                      }};
    try {
        upload_ = std::make_shared<const ScanUpload>(std::move(request), std::move(listener));
    } catch (const std::system_error& error) {
        uploadDidEnd(std::unexpected{platform::UrlError{platform::UrlErrorKind::unknown, error.what()}}, *shared);
    }
}

void ScanProcessor::uploadDidEnd(platform::UrlOutcome outcome, const WaitingLibrary& library) {
    upload_.reset();
    if (!outcome) {
        log::debug(wording_.function, [&] { return outcome.error().text; });
        uploadDidFail(codeOf(outcome.error().kind, ResponseCode::UNKNOWN_ERROR));
        library.cancel();
        return;
    }
    auto text = std::move(outcome->body).value_or("");
    const auto answer = ScanAnswer::decode(text);
    if (!answer) {
        uploadDidFail(ResponseCode::UNKNOWN_ERROR);
        library.cancel();
        return;
    }
    log::debug(wording_.function, [&] { return std::string{wording_.answered} + text; });
    if (answer->isAccepted) {
        proceed(answer->scanResultBlob, library);
    } else {
        log::info(wording_.function, wording_.refused);
        serverDidRefuse(text);
        library.cancel();
    }
    if (const auto from = screen()) {
        from->setLatestServerResult(std::move(text));
    }
}

void ScanProcessor::proceed(const std::string& scanResultBlob, const WaitingLibrary& library) {
    log::info(wording_.function, wording_.accepted);
    const auto from = screen();
    if (const auto& vendor = platform::services().faceTec) {
        vendor->setOverrideResultScreenSuccessMessage(themeText(from, &ThemeCustomization::faceScanSuccessMessageText));
    }
    if (from) {
        accepted_ = {.screen = from, .due = from->expectSuccess()};
    }
    if (!library.proceedToNextStep(scanResultBlob)) {
        accepted_ = {};
    }
}

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
        countAttempt(storedSession().get());
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

PhotoIDScanProcessor::PhotoIDScanProcessor(std::weak_ptr<IDScanScreen> fromViewController)
    : ScanProcessor{{.function = "processIDScanWhileFaceTecSDKWaits(idScanResult:idScanResultCallback:)",
                     .answered = "ID Scan Enrollment process response ",
                     .accepted = "OCR scan session didSucceed = true on server",
                     .refused = "ID scan session didSucceed = false on server"}}
    , fromViewController_{std::move(fromViewController)} {}

std::shared_ptr<platform::ViewController> PhotoIDScanProcessor::createSessionVC(platform::FaceTec& vendor,
                                                                                const std::string& sessionToken) {
    return vendor.createSessionVC(std::static_pointer_cast<PhotoIDScanProcessor>(shared_from_this()), sessionToken);
}

void PhotoIDScanProcessor::processIDScanWhileFaceTecSDKWaits(std::shared_ptr<FaceTecIDScanResult> idScanResult,
                                                             std::shared_ptr<FaceTecIDScanResultCallback> callback) {
    if (const auto from = fromViewController_.lock()) {
        from->setLatestIDScanResult(idScanResult);
    }
    const auto endpoint = Config::ocrIDScanBaseURL();
    if (idScanResult->status() != 0 || endpoint.empty()) {
        cancelUpload();
        callback->onIDScanResultCancel();
        return;
    }
    upload(idScanRequest(endpoint, *idScanResult),
           {.proceedToNextStep =
                [callback](const std::string& blob) { return callback->onIDScanResultProceedToNextStep(blob); },
            .cancel = [callback] { callback->onIDScanResultCancel(); },
            .uploadProgress = [callback](float fraction) { callback->onIDScanUploadProgress(fraction); }});
}

} // namespace kivo
