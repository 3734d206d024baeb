#include "services/acquisition/qr/inhouse/QRScannerView.hpp"

#include <kivo/platform/Services.hpp>

namespace kivo {

using platform::MetadataObject;
using platform::MetadataObjectType;

/// Hears the output in the view's place: a view under construction has no shared owner to hand out yet.
class QRScannerView::Detections final : public platform::CaptureMetadataOutputDelegate {
public:
    explicit Detections(QRScannerView& view)
        : view_{view} {}

    void didOutput(const std::vector<MetadataObject>& objects) override {
        // The view may be dropped by the one who hears of a code.
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

} // namespace kivo
