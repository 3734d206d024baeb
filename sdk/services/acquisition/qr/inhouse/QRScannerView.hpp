#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <string>

namespace kivo {

/// Hears what the camera view reads. Main thread.
class QRScannerViewDelegate {
public:
    virtual ~QRScannerViewDelegate() = default;

    /// The camera could not be set up.
    virtual void scanningDidFail() = 0;
    /// A code's text was read.
    virtual void scanningSucceeded(std::string code) = 0;
    /// The camera was stopped after a reading.
    virtual void scanningDidStop() = 0;
};

/// Shows what the camera sees. Without a camera there is no capture session, and the view stays black.
class QRScannerView final : public platform::View {
public:
    QRScannerView();

    std::weak_ptr<QRScannerViewDelegate> delegate;
    std::shared_ptr<platform::CaptureSession> captureSession;

    bool isScanning() const { return captureSession && captureSession->isRunning(); }

    /// Has the camera look for a code again.
    void resumeScanning();
};

} // namespace kivo
