#pragma once

#include <string>

namespace kivo {

/// Hears from the QR scanning screen. Main thread.
class QRScannerVCDelegate {
public:
    virtual ~QRScannerVCDelegate() = default;

    virtual void qrCodeScanned(std::string code) = 0;
    virtual void invalidQRCodeScanned() = 0;
};

} // namespace kivo
