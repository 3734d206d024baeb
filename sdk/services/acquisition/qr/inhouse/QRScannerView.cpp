#include "services/acquisition/qr/inhouse/QRScannerView.hpp"

namespace kivo {

QRScannerView::QRScannerView() {
    changeLayer([](platform::Layer& layer) { layer.masksToBounds = true; });
}

void QRScannerView::resumeScanning() {
    if (captureSession) {
        captureSession->startRunning();
    }
}

} // namespace kivo
