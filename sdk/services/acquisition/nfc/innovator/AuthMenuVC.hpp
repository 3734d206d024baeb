#pragma once

#include "Configuration/theme/ThemeApplication.hpp"
#include "Models/SessionKeys.hpp"
#include "services/acquisition/ScreenDelegates.hpp"
#include "services/acquisition/Settlement.hpp"
#include "services/acquisition/nfc/innovator/DocumentReading.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>
#include <string>

namespace kivo {

class OCRScanInitializeVC;

/// The document screen: a person chooses a document where the session lists documents, and the vendor reads the
/// document.
///
/// After a failed reading the screen stays for another try if the session has a document list, and closes otherwise.
/// After a success the session API decides what comes next.
class AuthMenuVC final : public platform::ViewController, public OCRScanVCDelegate {
public:
    /// Set before the view is loaded.
    std::weak_ptr<AuthMenuVCDelegate> delegate;
    /// Set before the view is loaded; null leaves the storyboard's looks and texts.
    std::shared_ptr<ThemeCustomization> themeObj;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void willMoveFromParent() override;
    void didGoBack() override;
    void traitCollectionDidChange() override;

    void ocrScanDidComplete(IdvOutcome result) override;

protected:
    void connect(platform::Interface& interface) override;

private:
    std::shared_ptr<AuthMenuVC> self() { return std::static_pointer_cast<AuthMenuVC>(shared_from_this()); }

    /// Runs the step after a tenth of a second, unless the person has left by then.
    void afterATenthOfASecond(void (AuthMenuVC::*step)());
    void applyTheme();
    void applyDynamicType();
    void setOptionsHidden(bool hidden);
    void documentSelected(int tag);
    void navigateToVelmoraScreen();
    void showReadIDUIViewController();
    bool mayRead();
    void readingDidNotBegin(const platform::readid::ReadIDError& error);
    void readingDidEnd(const platform::readid::ReadIDResult& result);
    void readingDidSucceed(const platform::readid::SuccessValue& value);
    void readingDidFail(const platform::readid::Failure& failure);
    void sendDocumentReadNotification();
    void noticeDidEnd(const NoticeOutcome& outcome, const std::shared_ptr<const Settlement::Due>& due);
    void presentOcrFlow();
    std::shared_ptr<platform::ViewController> makeIDScanScreen();
    void closeDocumentSelectionButtonTap();
    void closeUnlessDocumentsAreListed();
    void closeDocumentScreen();

    std::shared_ptr<platform::StackView> optionsContainerStackView_;
    std::shared_ptr<platform::Label> titleInfoLabel_;
    std::shared_ptr<platform::TextView> processDescriptionTextView_;
    std::shared_ptr<platform::Label> scanPassportLabel_;
    std::shared_ptr<platform::Label> scanResidentCardLabel_;
    std::shared_ptr<platform::Label> otherCardLabel_;
    std::shared_ptr<platform::View> passportOptionContainerView_;
    std::shared_ptr<platform::View> idCardOptionContainerView_;
    std::shared_ptr<platform::View> otherCardContainerView_;
    std::shared_ptr<platform::ImageView> documentOptionOneImageView_;
    std::shared_ptr<platform::ImageView> documentOptionTwoImageView_;
    std::shared_ptr<platform::ImageView> documentOptionThreeImageView_;
    std::shared_ptr<platform::View> stepIllustration_;
    std::shared_ptr<platform::View> stepDoneView_;
    ui::CloseButton closeButton_;

    std::shared_ptr<const ActivationResponse> qrCodeResponse_;
    bool isDocListAvailable_ = false;
    /// Null without a vendor's library.
    std::shared_ptr<platform::readid::NFCWithAccessControlFlow> readIdUiFlow_;
    std::optional<platform::readid::NFCResult> nfcResult_;
    std::shared_ptr<Settlement> settlement_;
    /// The ID scan that this screen presented last.
    std::weak_ptr<OCRScanInitializeVC> idScan_;
};

} // namespace kivo
