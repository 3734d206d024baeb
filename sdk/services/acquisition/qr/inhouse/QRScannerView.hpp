#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/ui/PreviewView.hpp>

#include <memory>
#include <string>
#include <vector>

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

/// Shows what the camera sees and looks for codes in it. Without a camera, or when it cannot be opened, the session
/// runs without pictures; a session that refuses the camera is dropped.
class QRScannerView final : public platform::PreviewView {
public:
    QRScannerView();
    QRScannerView(const QRScannerView&) = delete;
    QRScannerView& operator=(const QRScannerView&) = delete;
    ~QRScannerView() override;

    std::weak_ptr<QRScannerViewDelegate> delegate;
    std::shared_ptr<platform::CaptureSession> captureSession;

    bool isScanning() const { return captureSession && captureSession->isRunning(); }

    /// Has the camera look for a code again.
    void resumeScanning();
    void pauseScanning();

private:
    class Detections;

    void setUpCapture();
    /// Gives up on the camera.
    void fail();
    void detected(const std::vector<platform::MetadataObject>& objects);

    std::shared_ptr<Detections> detections_;
};

} // namespace kivo
