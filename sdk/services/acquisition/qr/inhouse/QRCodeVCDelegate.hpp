#pragma once

#include <string>

namespace kivo {

/// Hears from the activation code screen and the QR scanning screen. Main thread.
class QRCodeVCDelegate {
public:
    virtual ~QRCodeVCDelegate() = default;

    virtual void invalidQRCodeScanned() = 0;
    virtual void activationCodeEntered(std::string code) = 0;
    virtual void activationCodeScanned(std::string code) = 0;
    virtual void closeButtonPressed() = 0;
};

} // namespace kivo
