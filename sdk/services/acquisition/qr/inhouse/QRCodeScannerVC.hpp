#pragma once

#include "Configuration/theme/ThemeApplication.hpp"
#include "services/acquisition/qr/inhouse/QRScannerVCDelegate.hpp"
#include "services/acquisition/qr/inhouse/QRScannerView.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <string>

namespace kivo {

/// The screen that reads the activation code from a QR code.
///
/// After a good code it stays, with the camera stopped; after a bad one the camera starts again a little later.
class QRCodeScannerVC final : public platform::ViewController, public QRScannerViewDelegate {
public:
    // Set before the view is loaded.
    std::weak_ptr<QRScannerVCDelegate> delegate;
    /// Null leaves the storyboard's looks and texts.
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
    /// Unless the camera runs, or has shown a good code already.
    void resumeScanning();
    void resumeScanningLater();

    std::shared_ptr<QRScannerView> qrCodeScannerView_;
    std::shared_ptr<platform::Button> scanManuallyButton_;
    ui::CloseButton closeButton_;
    /// The last code read; while there is one, the camera does not start again by itself.
    std::string scannedCodeValue_;
};

} // namespace kivo
