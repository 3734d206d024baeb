#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/acquisition/nfc/innovator/ReadingFlow.hpp"
#include "ui/DynamicType.hpp"
#include "ui/Leaving.hpp"

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
    interface.outlet("closeButton", closeButton_.button);
    interface.outlet("closeButtonWidth", closeButton_.width);
    interface.outlet("closeButtonHeight", closeButton_.height);

    interface.action("documentSelected",
                     [this](const std::shared_ptr<platform::View>& sender) { documentSelected(sender->tag()); });
    interface.action("scannPassportTap", [this](const auto&) { navigateToVelmoraScreen(); });
    interface.action("closeDocumentSelectionButtonTap", [this](const auto&) { closeDocumentSelectionButtonTap(); });
}

void AuthMenuVC::viewDidLoad() {
    qrCodeResponse_ = storedSession();
    isDocListAvailable_ = ActivationResponse::isDocumentListAvailable(qrCodeResponse_ ? &*qrCodeResponse_ : nullptr);
    applyTheme();
    if (platform::services().readID) {
        readIdUiFlow_ = makeReadingFlow(qrCodeResponse_ ? &*qrCodeResponse_ : nullptr, themeObj.get());
    }
    if (!isDocListAvailable_) {
        platform::services().mainQueue->asyncAfter(100ms, [self = self()] { self->navigateToVelmoraScreen(); });
    }
}

void AuthMenuVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    const auto& theme = *themeObj;
    const auto apply = [](platform::Label& label, const std::string& text, const auto& font) {
        ui::applyText(label, text);
        ui::applyFont(label, font);
    };
    apply(*titleInfoLabel_, theme.selectIDTitleText, theme.screenTitleFont);
    titleInfoLabel_->setTextColor(theme.screenTitleColor);
    apply(*processDescriptionTextView_, theme.selectIDDescriptionText, theme.descriptionInfoFont);
    processDescriptionTextView_->setTextColor(theme.screenDescriptionInfoTextColor);
    apply(*scanPassportLabel_, theme.selectIDPassportOptionText, theme.documentOptionsTitleFont);
    apply(*scanResidentCardLabel_, theme.selectIDResidentCardOptionText, theme.documentOptionsTitleFont);
    apply(*otherCardLabel_, theme.selectIDOtherCardOptionText, theme.documentOptionsTitleFont);
    if (theme.appBundle) {
        documentOptionOneImageView_->setImage(platform::Image::named("documentOptionOneImage", *theme.appBundle));
        documentOptionTwoImageView_->setImage(platform::Image::named("documentOptionTwoImage", *theme.appBundle));
        documentOptionThreeImageView_->setImage(platform::Image::named("documentOptionThreeImage", *theme.appBundle));
    }
    ui::applyCloseButton(closeButton_, theme);
}

void AuthMenuVC::viewWillAppear(bool /*animated*/) {
    using enum DocumentListConfigurationStatus;
    ThemeCustomization::setDocumentListConfigurationStatus(isDocListAvailable_ ? available : notAvailable);
    setOptionsHidden(!isDocListAvailable_ || UIStateManager::shared().docAuthState == DocAuthStatus::docAuthSuccess);
    applyDynamicType();
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
    if (!ui::followsReadingSize(themeObj)) {
        return;
    }
    const auto themeFont = [this](std::optional<platform::Font> ThemeCustomization::* font) {
        return themeObj ? (*themeObj).*font : std::nullopt;
    };
    ui::followReadingSize(*titleInfoLabel_, themeFont(&ThemeCustomization::screenTitleFont), ui::screenTitleFallback);
    ui::followReadingSize(*processDescriptionTextView_, themeFont(&ThemeCustomization::descriptionInfoFont));
    for (const auto& label : {scanPassportLabel_, scanResidentCardLabel_, otherCardLabel_}) {
        ui::followReadingSize(*label, themeFont(&ThemeCustomization::documentOptionsTitleFont));
    }
    ui::limitReadingSize(*view(), themeObj);
}

void AuthMenuVC::documentSelected(int tag) {
    constexpr std::string_view function = "documentSelected(_:)";
    const auto read = [this](std::vector<DocumentType> types) {
        if (readIdUiFlow_) {
            readIdUiFlow_->allowedDocumentTypes = std::move(types);
        }
        navigateToVelmoraScreen();
    };
    if (tag == 1) {
        log::info(function, "Passport Type");
        read({DocumentType::passport});
    } else if (tag == 2) {
        log::info(function, "ID Card TD1/TD2 Type");
        read({DocumentType::identityCardTD1, DocumentType::identityCardTD2});
    } else if (tag == 3) {
        platform::services().mainQueue->asyncAfter(100ms, [self = self()] { self->presentOcrFlow(); });
    }
}

void AuthMenuVC::presentOcrFlow() {
    constexpr std::string_view function = "presentOcrFlow()";
    log::info(function, "OCR Flow");
    const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
    if (!storyboard) {
        log::error(function, storyboard.error());
        return;
    }
    const auto screen = (*storyboard)->instantiate("OCRScanInitializeVC");
    if (!screen) {
        log::error(function, screen.error());
        return;
    }
    if (const auto scan = std::dynamic_pointer_cast<OCRScanScreen>(*screen)) {
        scan->setTheme(themeObj);
        scan->setDelegate(self());
    }
    (*screen)->setModalPresentationStyle(platform::ModalPresentationStyle::fullScreen);
    present(*screen, /*animated=*/false);
}

void AuthMenuVC::ocrScanDidComplete(IdvOutcome result) {
    using enum DocAuthStatus;
    UIStateManager::shared().docAuthState = result ? docAuthSuccess : docAuthFailedOrInitialized;
    if (const auto listener = delegate.lock()) {
        listener->ocrFlowDidComplete(std::move(result));
    }
}

void AuthMenuVC::closeDocumentSelectionButtonTap() {
    ui::popOrDismiss(*this, [self = self()] { self->failLater(ResponseCode::CANCELLED_BY_USER); });
}

void AuthMenuVC::closeUnlessDocumentsAreListed() {
    if (isDocListAvailable_) {
        return;
    }
    log::info("closeDocumentScreen()", "do popDocMenuVC");
    platform::services().mainQueue->asyncAfter(100ms, [self = self()] {
        if (const auto navigation = self->navigationController()) {
            navigation->popViewController(/*animated=*/false);
        } else {
            self->dismiss(/*animated=*/false);
        }
    });
}

void AuthMenuVC::complete(IdvOutcome outcome) {
    if (const auto listener = delegate.lock()) {
        listener->documentFlowDidComplete(std::move(outcome));
    }
}

void AuthMenuVC::failLater(ResponseCode code) {
    platform::services().mainQueue->asyncAfter(100ms, [self = self(), code] { self->complete(std::unexpected{code}); });
}

} // namespace kivo
