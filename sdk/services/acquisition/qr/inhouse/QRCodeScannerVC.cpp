#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"

#include "Configuration/theme/DynamicType.hpp"
#include "services/acquisition/qr/inhouse/QRCodeData.hpp"
#include "ui/CloseConfirmation.hpp"
#include "ui/Leaving.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

void QRCodeScannerVC::connect(platform::Interface& interface) {
    interface.outlet("qrCodeScannerView", qrCodeScannerView_);
    interface.optionalOutlet("scanManuallyButton", scanManuallyButton_);
    interface.optionalOutlet("closeButton", closeButton_.button);
    interface.optionalOutlet("closeButtonWidth", closeButton_.width);
    interface.optionalOutlet("closeButtonHeight", closeButton_.height);

    interface.action("manualCodeBtnTap", [this](const auto&) { ui::popOrDismiss(*this); });
    interface.action("closeButtonTap", [this](const auto&) { ui::popOrDismiss(*this); });
}

void QRCodeScannerVC::viewDidLoad() {
    ui::setUpCloseBarButton(*this);
    qrCodeScannerView_->delegate = std::static_pointer_cast<QRCodeScannerVC>(shared_from_this());
}

void QRCodeScannerVC::viewWillAppear(bool /*animated*/) {
    applyTheme();
    applyDynamicType();
}

void QRCodeScannerVC::viewDidAppear(bool /*animated*/) {
    resumeScanning();
}

void QRCodeScannerVC::viewWillDisappear(bool /*animated*/) {
    scannedCodeValue_.clear();
    qrCodeScannerView_->pauseScanning();
}

void QRCodeScannerVC::traitCollectionDidChange() {
    applyDynamicType();
}

void QRCodeScannerVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    ui::applyTitle(*scanManuallyButton_, themeObj->codeScreenEnterCodeManuallyButtonTitle);
    ui::applyPrimaryButton(*scanManuallyButton_, *themeObj, themeObj->qrScanScreenEnterManuallyButtonBackgroundColor,
                           themeObj->qrScanScreenEnterManuallyButtonTitleColor);
    ui::applyCloseButton(closeButton_, *themeObj);
}

void QRCodeScannerVC::applyDynamicType() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*scanManuallyButton_, themeObj ? themeObj->primaryButtonFont : std::nullopt);
}

void QRCodeScannerVC::scanningSucceeded(std::string code) {
    const auto listener = delegate.lock();
    if (auto payload = QRCodeData::decode(code)) {
        scannedCodeValue_ = payload->code;
        if (listener) {
            listener->qrCodeScanned(std::move(payload->code));
        }
        return;
    }
    if (listener) {
        listener->invalidQRCodeScanned();
    }
    resumeScanningLater();
}

void QRCodeScannerVC::resumeScanning() {
    if (!qrCodeScannerView_->isScanning() && scannedCodeValue_.empty()) {
        qrCodeScannerView_->resumeScanning();
    }
}

void QRCodeScannerVC::resumeScanningLater() {
    // Time enough to take the wrong code away from the camera.
    platform::services().mainQueue->asyncAfter(3s, [weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<QRCodeScannerVC>(weak.lock());
        // Under another screen the camera rests; it starts when this one is back.
        if (self && self->view()->window()) {
            self->resumeScanning();
        }
    });
}

} // namespace kivo
