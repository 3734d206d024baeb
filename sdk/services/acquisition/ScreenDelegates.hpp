#pragma once

#include <kivo/IdvResult.hpp>

#include <string>

/// The listeners of the acquisition screens. Main thread.
namespace kivo {

/// Learns the outcomes of the face scan screen.
class LivenessCheckVCDelegate {
public:
    virtual ~LivenessCheckVCDelegate() = default;

    virtual void livenessCheckDidComplete(IdvOutcome result) = 0;
};

/// Learns the outcome of the ID scan screen.
class OCRScanVCDelegate {
public:
    virtual ~OCRScanVCDelegate() = default;

    virtual void ocrScanDidComplete(IdvOutcome result) = 0;
};

/// Learns the outcomes of the document screen.
class AuthMenuVCDelegate {
public:
    virtual ~AuthMenuVCDelegate() = default;

    virtual void documentFlowDidComplete(IdvOutcome result) = 0;

    /// The document screen passes on the outcome of an ID scan that it presented itself.
    virtual void ocrFlowDidComplete(IdvOutcome result) = 0;
};

/// Learns the codes from the activation code screen, which passes on the codes of the QR scanning screen.
class QRCodeVCDelegate {
public:
    virtual ~QRCodeVCDelegate() = default;

    virtual void invalidQRCodeScanned() = 0;
    virtual void activationCodeEntered(std::string code) = 0;
    virtual void activationCodeScanned(std::string code) = 0;
    virtual void closeButtonPressed() = 0;
};

/// Learns the codes from the QR scanning screen.
class QRScannerVCDelegate {
public:
    virtual ~QRScannerVCDelegate() = default;

    virtual void qrCodeScanned(std::string code) = 0;
    virtual void invalidQRCodeScanned() = 0;
};

} // namespace kivo
