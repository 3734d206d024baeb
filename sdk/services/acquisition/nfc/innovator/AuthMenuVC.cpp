#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Configuration/theme/ReadingSize.hpp"
#include "Models/SessionKeys.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/acquisition/nfc/innovator/DocumentReading.hpp"
#include "ui/Closing.hpp"
#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo {

using namespace std::chrono_literals;
using platform::readid::DocumentType;

namespace {

constexpr std::string_view presentOcrFunction = "presentOcrFlow()";

// The storyboard's tags of the options.
constexpr int passportTag = 1;
constexpr int identityCardTag = 2;
constexpr int otherCardTag = 3;

void cancel(std::shared_ptr<const Settlement::Due> cancellation) {
    platform::services().mainQueue->asyncAfter(
        100ms, [due = std::move(cancellation)] { due->cancel(UIStateManager::shared().docAuthState); });
}

} // namespace

void AuthMenuVC::connect(platform::Interface& interface) {
    interface.outlet("optionsContainerStackView", optionsContainerStackView_);
    interface.outlet("titleInfoLabel", titleInfoLabel_);
    interface.outlet("processDescriptionTextView", processDescriptionTextView_);
    interface.outlet("scanPassportLabel", scanPassportLabel_);
    interface.outlet("scanResidentCardLabel", scanResidentCardLabel_);
    interface.outlet("otherCardLabel", otherCardLabel_);
    interface.outlet("passportOptionContainerView", passportOptionContainerView_);
    interface.outlet("idCardOptionContainerView", idCardOptionContainerView_);
    interface.outlet("otherCardContainerView", otherCardContainerView_);
    interface.outlet("documentOptionOneImageView", documentOptionOneImageView_);
    interface.outlet("documentOptionTwoImageView", documentOptionTwoImageView_);
    interface.outlet("documentOptionThreeImageView", documentOptionThreeImageView_);
    interface.optionalOutlet("stepIllustration", stepIllustration_);
    interface.optionalOutlet("stepDoneView", stepDoneView_);
    interface.outlet("closeButton", closeButton_.button);
    interface.outlet("closeButtonWidth", closeButton_.width);
    interface.outlet("closeButtonHeight", closeButton_.height);

    interface.action("documentSelected",
                     [this](const std::shared_ptr<platform::View>& sender) { documentSelected(sender->tag()); });
    interface.action("scannPassportTap", [this](const auto&) { navigateToVelmoraScreen(); });
    interface.action("closeDocumentSelectionButtonTap", [this](const auto&) { closeDocumentSelectionButtonTap(); });
}

void AuthMenuVC::viewDidLoad() {
    settlement_ = Settlement::with(delegate, &AuthMenuVCDelegate::documentFlowDidComplete);
    qrCodeResponse_ = storedSession();
    isDocListAvailable_ = ActivationResponse::isDocumentListAvailable(qrCodeResponse_.get());
    applyTheme();
    if (platform::services().readID) {
        readIdUiFlow_ = makeReadingFlow(qrCodeResponse_.get(), themeObj.get());
    }
    if (!isDocListAvailable_) {
        afterATenthOfASecond(&AuthMenuVC::navigateToVelmoraScreen);
    }
}

void AuthMenuVC::afterATenthOfASecond(void (AuthMenuVC::*step)()) {
    platform::services().mainQueue->asyncAfter(100ms, [self = self(), step] {
        if (!self->settlement_->isLeft()) {
            ((*self).*step)();
        }
    });
}

void AuthMenuVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    const auto& theme = *themeObj;
    ui::applyScreenTitle(*titleInfoLabel_, theme.selectIDTitleText, theme);
    ui::applyDescription(*processDescriptionTextView_, theme.selectIDDescriptionText, theme);
    const auto applyOption = [&](int tag, platform::Label& label, const std::string& text) {
        ui::applyText(label, text);
        ui::applyFont(label, theme.documentOptionsTitleFont);
        // The button over the option has no text of its own.
        if (const auto button = view()->viewWithTag(tag)) {
            button->setAccessibilityLabel(label.text());
        }
    };
    applyOption(passportTag, *scanPassportLabel_, theme.selectIDPassportOptionText);
    applyOption(identityCardTag, *scanResidentCardLabel_, theme.selectIDResidentCardOptionText);
    applyOption(otherCardTag, *otherCardLabel_, theme.selectIDOtherCardOptionText);
    if (theme.appBundle) {
        documentOptionOneImageView_->setImage(platform::Image::named("documentOptionOneImage", *theme.appBundle));
        documentOptionTwoImageView_->setImage(platform::Image::named("documentOptionTwoImage", *theme.appBundle));
        documentOptionThreeImageView_->setImage(platform::Image::named("documentOptionThreeImage", *theme.appBundle));
    }
}

void AuthMenuVC::viewWillAppear(bool /*animated*/) {
    if (themeObj) {
        ui::applyCloseButton(closeButton_, *themeObj);
    }
    using enum DocumentListConfigurationStatus;
    ThemeCustomization::setDocumentListConfigurationStatus(isDocListAvailable_ ? available : notAvailable);
    const bool isDone = UIStateManager::shared().docAuthState == DocAuthStatus::docAuthSuccess;
    setOptionsHidden(!isDocListAvailable_ || isDone);
    stepIllustration_->setHidden(isDone);
    stepDoneView_->setHidden(!isDone);
    applyDynamicType();
}

void AuthMenuVC::willMoveFromParent() {
    // An ID scan that is still on display reports to this screen, which therefore must outlive the scan.
    if (const auto scan = idScan_.lock(); scan && scan->dueUntilTold) {
        scan->dueUntilTold =
            std::make_shared<const std::pair<std::shared_ptr<AuthMenuVC>, std::shared_ptr<const void>>>(
                self(), std::move(scan->dueUntilTold));
    }
    // The overlay covers the navigation controller, which stays.
    ui::hideActivityOverlay(*this);
}

void AuthMenuVC::traitCollectionDidChange() {
    applyDynamicType();
}

void AuthMenuVC::setOptionsHidden(bool hidden) {
    optionsContainerStackView_->setHidden(hidden);
    titleInfoLabel_->setHidden(hidden);
    processDescriptionTextView_->setHidden(hidden);
    scanPassportLabel_->setHidden(hidden);
    scanResidentCardLabel_->setHidden(hidden);
    if (themeObj && themeObj->zorCloseButtonAppearance && !themeObj->zorCloseButtonAppearance->closeButtonIsHidden) {
        closeButton_.button->setHidden(hidden);
    }
    if (isDocListAvailable_) {
        passportOptionContainerView_->setHidden(hidden);
        idCardOptionContainerView_->setHidden(hidden);
    }
    otherCardContainerView_->setHidden(true);
}

void AuthMenuVC::applyDynamicType() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*titleInfoLabel_, themeObj, &ThemeCustomization::screenTitleFont, ui::screenTitleFallback);
    ui::followReadingSize(*processDescriptionTextView_, themeObj, &ThemeCustomization::descriptionInfoFont);
    for (const auto& label : {scanPassportLabel_, scanResidentCardLabel_, otherCardLabel_}) {
        ui::followReadingSize(*label, themeObj, &ThemeCustomization::documentOptionsTitleFont);
    }
}

void AuthMenuVC::documentSelected(int tag) {
    constexpr std::string_view function = "documentSelected(_:)";
    const auto read = [this](std::vector<DocumentType> types) {
        if (readIdUiFlow_) {
            readIdUiFlow_->allowedDocumentTypes = std::move(types);
        }
        navigateToVelmoraScreen();
    };
    if (tag == passportTag) {
        log::info(function, "Passport Type");
        read({DocumentType::passport});
    } else if (tag == identityCardTag) {
        log::info(function, "ID Card TD1/TD2 Type");
        read({DocumentType::identityCardTD1, DocumentType::identityCardTD2});
    } else if (tag == otherCardTag) {
        afterATenthOfASecond(&AuthMenuVC::presentOcrFlow);
    }
}

void AuthMenuVC::presentOcrFlow() {
    if (const auto scan = idScan_.lock(); scan && scan->presentingViewController()) {
        return;
    }
    log::info(presentOcrFunction, "OCR Flow");
    const auto screen = makeIDScanScreen();
    if (!screen) {
        // The storyboard lacks the scene, which is a fault of packaging; the host still gets an answer.
        ocrScanDidComplete(std::unexpected{ResponseCode::UNKNOWN_ERROR});
        return;
    }
    screen->setModalPresentationStyle(platform::ModalPresentationStyle::fullScreen);
    present(screen, /*animated=*/false);
}

std::shared_ptr<platform::ViewController> AuthMenuVC::makeIDScanScreen() {
    const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
    if (!storyboard) {
        log::error(presentOcrFunction, storyboard.error());
        return nullptr;
    }
    auto screen = (*storyboard)->instantiate("OCRScanInitializeVC");
    if (!screen) {
        log::error(presentOcrFunction, screen.error());
        return nullptr;
    }
    auto scan = std::dynamic_pointer_cast<OCRScanInitializeVC>(*screen);
    if (!scan) {
        log::error(presentOcrFunction,
                   "The scene \"OCRScanInitializeVC\" has another class; give it the one of that name.");
        return nullptr;
    }
    scan->themeObj = themeObj;
    scan->delegate = self();
    scan->dueUntilTold = settlement_->expect();
    idScan_ = scan;
    return scan;
}

void AuthMenuVC::ocrScanDidComplete(IdvOutcome result) {
    using enum DocAuthStatus;
    UIStateManager::shared().docAuthState = result ? docAuthSuccess : docAuthFailedOrInitialized;
    if (const auto listener = delegate.lock()) {
        if (result) {
            settlement_->recordSuccess();
        }
        listener->ocrFlowDidComplete(std::move(result));
    }
}

void AuthMenuVC::closeDocumentSelectionButtonTap() {
    if (ui::popOrDismiss(*this, [cancellation = settlement_->cancellation()] { cancel(cancellation); })) {
        settlement_->leave();
    }
}

void AuthMenuVC::didGoBack() {
    cancel(settlement_->leave());
}

void AuthMenuVC::closeUnlessDocumentsAreListed() {
    if (isDocListAvailable_) {
        return;
    }
    settlement_->leave();
    log::info("closeDocumentScreen()", "do popDocMenuVC");
    closeDocumentScreen();
}

void AuthMenuVC::closeDocumentScreen() {
    // By then the host may show an alert or another screen in response to the failure; that screen stays.
    platform::services().mainQueue->asyncAfter(100ms,
                                               [self = self()] { ui::popOrDismiss(*self, {}, /*animated=*/false); });
}

} // namespace kivo
