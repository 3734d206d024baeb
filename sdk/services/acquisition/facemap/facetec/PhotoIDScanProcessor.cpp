#include "services/acquisition/facemap/facetec/PhotoIDScanProcessor.hpp"

#include "Configuration/session/Config.hpp"
#include "services/acquisition/facemap/facetec/ScanRequest.hpp"

#include <kivo/platform/Services.hpp>

#include <utility>

namespace kivo {

using platform::FaceTecIDScanResult;
using platform::FaceTecIDScanResultCallback;

namespace {

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
