#pragma once

#include "Configuration/theme/ThemeApplication.hpp"
#include "services/acquisition/ScreenDelegates.hpp"
#include "services/acquisition/qr/inhouse/CodeBoxes.hpp"

#include <kivo/Failure.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <array>
#include <atomic>
#include <memory>
#include <string>

namespace kivo {

/// The screen on which a session starts: a person types the activation code, or goes on to the QR scanning screen.
///
/// The screen stays after it has delivered a code; the session API decides what comes next.
class QRCodeVC final : public platform::ViewController, public QRScannerVCDelegate {
public:
    /// Set before the view is loaded.
    std::weak_ptr<QRCodeVCDelegate> delegate;
    /// Set before the view is loaded; null leaves the storyboard's looks and texts.
    std::shared_ptr<ThemeCustomization> themeObj;

    /// Whether the code has joined a session; going back then cancels nothing. Written on any thread.
    const std::shared_ptr<std::atomic<bool>> hasJoined = std::make_shared<std::atomic<bool>>(false);

    /// Empties the boxes so that another code can be typed, and tells what a person can do about a failed join. The
    /// single field keeps its text.
    void resetActivationCodeFields(FailureKind reason);

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void viewDidDisappear(bool animated) override;
    void didGoBack() override;
    void traitCollectionDidChange() override;
    void prepareForSegue(const platform::Segue& segue) override;

    void qrCodeScanned(std::string code) override;
    void invalidQRCodeScanned() override;

protected:
    void connect(platform::Interface& interface) override;

private:
    void chooseEntryStyle();
    void gatherBoxes();
    void applyTheme();
    void applyDynamicType();
    void editingchangeInTextField();
    void setErrorShown(bool shown);
    void closeButtonTap();
    void activationCodeEntered(std::string code);

    std::shared_ptr<platform::TextField> activationCodeTextField_;
    std::shared_ptr<platform::Label> activationCodeTitleLabel_;
    std::shared_ptr<platform::Label> orTitleLabel_;
    std::shared_ptr<platform::Label> getStartedTitleLabel_;
    std::shared_ptr<platform::Label> codeErrorLabel_;
    /// The layout's text, which asks to check the code.
    std::string refusedText_;
    std::shared_ptr<platform::Button> scanQRCodeButton_;
    ui::CloseButton closeButton_;
    std::shared_ptr<platform::StackView> stackViewBoxedTextfield_;
    std::array<std::shared_ptr<platform::TextField>, 6> textFieldDigits_;
    std::shared_ptr<platform::Button> codeContainerButton_;
    /// Null unless the theme asks for boxes.
    std::shared_ptr<CodeBoxes> boxes_;
};

} // namespace kivo
