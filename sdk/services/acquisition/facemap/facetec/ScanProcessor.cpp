#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include "Configuration/logging/Log.hpp"
#include "NetworkManager/RequestSender.hpp"
#include "services/acquisition/facemap/facetec/ScanAnswer.hpp"

#include <kivo/platform/Services.hpp>

#include <system_error>
#include <utility>

namespace kivo {

bool ScanProcessor::begin(const std::string& sessionToken) {
    const auto& vendor = platform::services().faceTec;
    const auto vendorScreen = vendor ? createSessionVC(*vendor, sessionToken) : nullptr;
    const auto from = screen();
    if (!vendorScreen || !from) {
        return false;
    }
    from->showVendorScreen(vendorScreen);
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

} // namespace kivo
