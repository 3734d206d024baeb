#pragma once

#include "Configuration/theme/ThemeApplication.hpp"
#include "services/acquisition/ScreenDelegates.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/PreviewView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <string>
#include <vector>

namespace kivo {

/// Learns the readings of the camera view. Main thread.
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

/// Shows the camera's pictures and looks for codes in them. Without a camera that can be opened, the session runs
/// without pictures; a session that refuses the camera is dropped.
class QRScannerView final : public platform::PreviewView {
public:
    QRScannerView();
    QRScannerView(const QRScannerView&) = delete;
    QRScannerView& operator=(const QRScannerView&) = delete;
    ~QRScannerView() override;

    std::weak_ptr<QRScannerViewDelegate> delegate;
    std::shared_ptr<platform::CaptureSession> captureSession;

    bool isScanning() const { return captureSession && captureSession->isRunning(); }

    /// Starts the camera again.
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

/// The screen that reads the activation code from a QR code.
///
/// After a valid code the screen stays, with the camera stopped; after an invalid code the camera starts again three
/// seconds later.
class QRCodeScannerVC final : public platform::ViewController, public QRScannerViewDelegate {
public:
    /// Set before the view is loaded.
    std::weak_ptr<QRScannerVCDelegate> delegate;
    /// Set before the view is loaded; null leaves the storyboard's looks and texts.
    std::shared_ptr<ThemeCustomization> themeObj;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void traitCollectionDidChange() override;

    void scanningDidFail() override {}

    void scanningSucceeded(std::string code) override;

    void scanningDidStop() override {}

protected:
    void connect(platform::Interface& interface) override;

private:
    void applyTheme();
    void applyDynamicType();
    /// Starts the camera, unless the camera runs or a valid code has been read.
    void resumeScanning();
    void resumeScanningLater();
    void setErrorShown(bool shown);

    std::shared_ptr<QRScannerView> qrCodeScannerView_;
    std::shared_ptr<platform::Label> scanHintLabel_;
    std::shared_ptr<platform::Label> scanErrorLabel_;
    std::shared_ptr<platform::Button> scanManuallyButton_;
    ui::CloseButton closeButton_;
    /// The last valid code; empty before. While a code is set, the camera does not start again by itself.
    std::string scannedCodeValue_;
};

} // namespace kivo
