#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"

#include "Configuration/theme/ReadingSize.hpp"
#include "services/acquisition/qr/inhouse/ActivationCode.hpp"
#include "ui/Closing.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>

#include <chrono>
#include <utility>

namespace kivo {
using platform::MetadataObject;
using platform::MetadataObjectType;
using namespace std::chrono_literals;

/// The delegate of the camera's output. The view cannot be the delegate itself, because a view under construction has
/// no shared owner yet.
class QRScannerView::Detections final : public platform::CaptureMetadataOutputDelegate {
public:
    explicit Detections(QRScannerView& view)
        : view_{view} {}

    void didOutput(const std::vector<MetadataObject>& objects) override {
        // The listener may release the view when a code is detected.
        if (const auto alive = view_.weak_from_this().lock()) {
            view_.detected(objects);
        }
    }

private:
    QRScannerView& view_;
};

QRScannerView::QRScannerView() {
    changeLayer([](platform::Layer& layer) { layer.masksToBounds = true; });
    setUpCapture();
}

QRScannerView::~QRScannerView() {
    pauseScanning();
}

void QRScannerView::setUpCapture() {
    const auto& services = platform::services();
    auto& camera = *services.camera;
    captureSession = camera.makeSession();
    const auto device = camera.defaultVideoDevice();
    const auto input = device ? camera.makeInput(device) : nullptr;
    if (!input) {
        return;
    }
    if (!captureSession->canAddInput(*input)) {
        fail();
        return;
    }
    captureSession->addInput(input);
    const auto output = camera.makeMetadataOutput();
    if (!output || !captureSession->canAddOutput(*output)) {
        fail();
        return;
    }
    captureSession->addOutput(output);
    detections_ = std::make_shared<Detections>(*this);
    output->setDelegate(detections_, services.mainQueue);
    output->setObjectTypes(
        {MetadataObjectType::qr, MetadataObjectType::ean8, MetadataObjectType::ean13, MetadataObjectType::pdf417});
    setPreviewSession(captureSession);
    captureSession->startRunning();
}

void QRScannerView::fail() {
    if (const auto listener = delegate.lock()) {
        listener->scanningDidFail();
    }
    captureSession = nullptr;
}

void QRScannerView::detected(const std::vector<MetadataObject>& objects) {
    const auto listener = delegate.lock();
    if (!objects.empty()) {
        const auto& first = objects.front();
        if (!first.type || !first.text) {
            return;
        }
        platform::services().workspace->vibrate();
        if (listener) {
            listener->scanningSucceeded(*first.text);
        }
    }
    if (captureSession) {
        captureSession->stopRunning();
    }
    if (listener) {
        listener->scanningDidStop();
    }
}

void QRScannerView::resumeScanning() {
    if (captureSession) {
        captureSession->startRunning();
    }
}

void QRScannerView::pauseScanning() {
    if (isScanning()) {
        captureSession->stopRunning();
    }
}

void QRCodeScannerVC::connect(platform::Interface& interface) {
    interface.outlet("qrCodeScannerView", qrCodeScannerView_);
    interface.optionalOutlet("scanHintLabel", scanHintLabel_);
    interface.optionalOutlet("scanErrorLabel", scanErrorLabel_);
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
    if (!qrCodeScannerView_->previewSession()) {
        scanHintLabel_->setText(platform::localizedText("The camera cannot be used here. Type the code instead."));
    }
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
    ui::followReadingSize(*scanManuallyButton_, themeObj, &ThemeCustomization::primaryButtonFont);
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
    setErrorShown(true);
    resumeScanningLater();
}

void QRCodeScannerVC::setErrorShown(bool shown) {
    scanErrorLabel_->setHidden(!shown);
    scanHintLabel_->setHidden(shown);
}

void QRCodeScannerVC::resumeScanning() {
    if (!qrCodeScannerView_->isScanning() && scannedCodeValue_.empty()) {
        setErrorShown(false);
        qrCodeScannerView_->resumeScanning();
    }
}

void QRCodeScannerVC::resumeScanningLater() {
    // The delay gives the person time to take the wrong code away from the camera.
    platform::services().mainQueue->asyncAfter(3s, [weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<QRCodeScannerVC>(weak.lock());
        // Under another screen the camera stays stopped, and starts when this screen is back.
        if (self && self->view()->window()) {
            self->resumeScanning();
        }
    });
}

} // namespace kivo
