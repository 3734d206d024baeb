#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/theme/ReadingSize.hpp"
#include "Configuration/theme/ThemeApplication.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/FaceTecLibrary.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "ui/Closing.hpp"
#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <string_view>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

void OCRScanInitializeVC::viewDidLoad() {
    settlement_ = Settlement::with(delegate, &OCRScanVCDelegate::ocrScanDidComplete);
    startFaceTec([](bool /*isReady*/) {});
    chooseFaceTecLanguage();
    // The screen does not wait for the library, which refuses a session that comes too early and says why.
    platform::services().mainQueue->asyncAfter(100ms, [weak = std::weak_ptr{self()}] {
        const auto screen = weak.lock();
        if (screen && !screen->settlement_->isLeft()) {
            screen->initializeFacetecOcr();
        }
    });
    if (themeObj) {
        ThemeHelpers::applyTheme(*themeObj);
    }
    ui::followsReadingSize(*view(), themeObj);
}

void OCRScanInitializeVC::initializeFacetecOcr() {
    constexpr std::string_view function = "initializeFacetecOcr()";
    if (refusesFurtherAttempt(*this)) {
        settlement_->settle(std::unexpected{ResponseCode::RETRY_LIMIT_REACHED});
        retire();
        return;
    }
    const auto token = storedScanToken();
    if (!token) {
        log::error(function, "enrollment Failed ----");
        return;
    }
    const auto processor = std::make_shared<PhotoIDScanProcessor>(self());
    if (!processor->begin(*token)) {
        log::error(function, "The face scan library gave no screen for an ID scan.");
        settlement_->settle(std::unexpected{ResponseCode::OCR_SCAN_FAILED});
        close();
    }
}

void OCRScanInitializeVC::setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) {
    latestIDScanResult_ = std::move(result);
}

void OCRScanInitializeVC::onComplete(std::shared_ptr<const Settlement::Due> success) {
    const bool isSuccess = success != nullptr;
    log::info("onComplete()", isSuccess ? "OCR Scan success" : "OCR Scan fail");
    auto due = isSuccess ? std::move(success) : settlement_->expect();
    platform::services().mainQueue->asyncAfter(100ms, [self = self(), isSuccess, due = std::move(due)] {
        if (isSuccess) {
            self->scanDidSucceed(*due);
        } else {
            self->scanDidNotSucceed(due);
        }
    });
}

void OCRScanInitializeVC::scanDidSucceed(const Settlement::Due& due) {
    due.settle(std::make_shared<IdvResult>("", IdvEvents::OCR_SCAN));
    close();
}

void OCRScanInitializeVC::scanDidNotSucceed(const std::shared_ptr<const Settlement::Due>& due) {
    constexpr std::string_view function = "onComplete()";
    ui::hideActivityOverlay(*this);
    if (!latestIDScanResult_) {
        log::info(function, "OCR Scan fail no latestIDScanResult");
        due->settle(std::unexpected{ResponseCode::OCR_SCAN_FAILED});
        retire();
        return;
    }
    const int status = latestIDScanResult_->status();
    log::info(function, [&] {
        return "OCR Scan fail with status " + std::to_string(status) + " and description " +
               latestIDScanResult_->description();
    });
    platform::services().mainQueue->asyncAfter(
        100ms, [due, status, held = dueUntilTold] { due->settle(std::unexpected{idScanFailure(status)}); });
    close();
}

void OCRScanInitializeVC::retire() {
    settlement_->leave();
    dueUntilTold.reset();
}

void OCRScanInitializeVC::close() {
    retire();
    ui::popOrDismiss(*this);
}

void OCRScanInitializeVC::didGoBack() {
    settlement_->leave()->cancel(UIStateManager::shared().docAuthState);
}

} // namespace kivo
