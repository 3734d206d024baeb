#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/theme/ThemeHelpers.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/FaceTecStart.hpp"
#include "services/acquisition/facemap/facetec/ScanFailures.hpp"
#include "ui/ActivityOverlay.hpp"
#include "ui/Later.hpp"
#include "ui/Leaving.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <string_view>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

void OCRScanInitializeVC::viewDidLoad() {
    startFaceTec([](bool /*isReady*/) {});
    // The library is not waited for: it refuses a session that comes too early, and says why.
    ui::later(100ms, self(), [](OCRScanInitializeVC& screen) { screen.initializeFacetecOcr(); });
    if (themeObj) {
        ThemeHelpers::applyTheme(*themeObj);
    }
}

void OCRScanInitializeVC::initializeFacetecOcr() {
    constexpr std::string_view function = "initializeFacetecOcr()";
    if (refusesFurtherAttempt(*this)) {
        report(std::unexpected{ResponseCode::RETRY_LIMIT_REACHED});
        return;
    }
    const auto token = storedScanToken();
    if (!token) {
        log::error(function, "enrollment Failed ----");
        return;
    }
    latestProcessor_ = std::make_shared<PhotoIDScanProcessor>(self());
    if (!latestProcessor_->begin(*token)) {
        log::error(function, "The face scan library gave no screen for an ID scan.");
        report(std::unexpected{ResponseCode::OCR_SCAN_FAILED});
        close();
    }
}

void OCRScanInitializeVC::showVendorScreen(const std::shared_ptr<platform::ViewController>& vendorScreen) {
    present(vendorScreen, /*animated=*/true);
}

void OCRScanInitializeVC::setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) {
    latestIDScanResult_ = std::move(result);
}

void OCRScanInitializeVC::setLatestServerResult(std::string answer) {
    latestServerResult_ = std::move(answer);
}

void OCRScanInitializeVC::onComplete() {
    const bool isSuccess = latestProcessor_ && latestProcessor_->isSuccess();
    log::info("onComplete()", isSuccess ? "OCR Scan success" : "OCR Scan fail");
    ui::later(100ms, self(), [isSuccess](OCRScanInitializeVC& screen) {
        if (isSuccess) {
            screen.scanDidSucceed();
        } else {
            screen.scanDidNotSucceed();
        }
    });
}

void OCRScanInitializeVC::scanDidSucceed() {
    report(std::make_shared<IdvResult>("", IdvEvents::OCR_SCAN));
    close();
}

void OCRScanInitializeVC::scanDidNotSucceed() {
    constexpr std::string_view function = "onComplete()";
    ui::hideActivityOverlay(*this);
    if (!latestIDScanResult_) {
        log::info(function, "OCR Scan fail no latestIDScanResult");
        report(std::unexpected{ResponseCode::OCR_SCAN_FAILED});
        return;
    }
    const int status = latestIDScanResult_->status();
    log::info(function, [&] {
        return "OCR Scan fail with status " + std::to_string(status) + " and description " +
               latestIDScanResult_->description();
    });
    close();
    // Held apart from the screen, which has gone by then.
    platform::services().mainQueue->asyncAfter(100ms, [listener = delegate, status] {
        if (const auto self = listener.lock()) {
            self->ocrScanDidComplete(std::unexpected{idScanFailure(status)});
        }
    });
}

void OCRScanInitializeVC::close() {
    ui::popOrDismiss(*this);
}

void OCRScanInitializeVC::didGoBack() {
    if (!hasReported_) {
        report(std::unexpected{ResponseCode::CANCELLED_BY_USER});
    }
}

void OCRScanInitializeVC::report(IdvOutcome outcome) {
    hasReported_ = true;
    if (const auto listener = delegate.lock()) {
        listener->ocrScanDidComplete(std::move(outcome));
    }
}

} // namespace kivo
