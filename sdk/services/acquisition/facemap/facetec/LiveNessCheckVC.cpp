#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/theme/ReadingSize.hpp"
#include "Configuration/theme/ThemeApplication.hpp"
#include "Models/ErrorManager.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/FaceTecLibrary.hpp"
#include "services/acquisition/facemap/facetec/ScanUpload.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "ui/Closing.hpp"
#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

void LiveNessCheckVC::connect(platform::Interface& interface) {
    interface.outlet("titleInfoLabel", titleInfoLabel_);
    interface.outlet("processDescriptionLabel", processDescriptionLabel_);
    interface.outlet("nextButton", nextButton_);
    interface.optionalOutlet("stepIllustration", stepIllustration_);
    interface.optionalOutlet("stepDoneView", stepDoneView_);
    interface.outlet("closeButton", closeButton_.button);
    interface.outlet("closeButtonWidth", closeButton_.width);
    interface.outlet("closeButtonHeight", closeButton_.height);

    interface.action("onLivenessButtonClick", [this](const auto&) { onLivenessButtonClick(); });
    interface.action("closeButtonTap", [this](const auto&) { closeButtonTap(); });
}

void LiveNessCheckVC::viewDidLoad() {
    settlement_ = Settlement::with(delegate, &LivenessCheckVCDelegate::livenessCheckDidComplete);
    // The library may take longer than the screen lasts, and answer on any thread.
    startFaceTec([weak = std::weak_ptr{settlement_}](bool isReady) {
        if (const auto settlement = weak.lock(); settlement && !isReady) {
            Settlement::settleAfter(200ms, settlement->expect(),
                                    std::unexpected{ResponseCode::FACETEC_INITIALIZATION_FAILED});
        }
    });
    if (themeObj) {
        ThemeHelpers::applyTheme(*themeObj);
    }
    chooseFaceTecLanguage();
}

void LiveNessCheckVC::viewWillAppear(bool /*animated*/) {
    applyTheme();
    showStateOfFaceStep();
    applyDynamicType();
}

void LiveNessCheckVC::willMoveFromParent() {
    // The overlay covers the navigation controller, which stays.
    ui::hideActivityOverlay(*this);
}

void LiveNessCheckVC::traitCollectionDidChange() {
    applyDynamicType();
}

void LiveNessCheckVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    const auto& theme = *themeObj;
    ui::applyScreenTitle(*titleInfoLabel_, theme.faceScanIntroTitle, theme);
    ui::applyDescription(*processDescriptionLabel_, theme.faceScanIntroDescription, theme);
    ui::applyTitle(*nextButton_, theme.faceScanIntroNextButtonTitle);
    ui::applyPrimaryButton(*nextButton_, theme, theme.faceScanIntroNextButtonBackgroundColor,
                           theme.faceScanIntroNextButtonTitleColor);
    ui::applyCloseButton(closeButton_, theme);
}

void LiveNessCheckVC::applyDynamicType() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*titleInfoLabel_, themeObj, &ThemeCustomization::screenTitleFont, ui::screenTitleFallback);
    ui::followReadingSize(*processDescriptionLabel_, themeObj, &ThemeCustomization::descriptionInfoFont);
    ui::followReadingSize(*nextButton_, themeObj, &ThemeCustomization::primaryButtonFont);
}

void LiveNessCheckVC::showStateOfFaceStep() {
    const bool isOpen = UIStateManager::shared().faceAuthState == FaceAuthStatus::faceAuthFailedOrInitialized;
    nextButton_->setEnabled(isOpen);
    setContentHidden(!isOpen);
    stepIllustration_->setHidden(!isOpen);
    stepDoneView_->setHidden(isOpen);
}

void LiveNessCheckVC::setContentHidden(bool hidden) {
    titleInfoLabel_->setHidden(hidden);
    processDescriptionLabel_->setHidden(hidden);
    nextButton_->setHidden(hidden);
    const auto appearance = themeObj ? themeObj->zorCloseButtonAppearance : nullptr;
    if (!appearance || !appearance->closeButtonIsHidden) {
        closeButton_.button->setHidden(hidden);
    }
}

void LiveNessCheckVC::onLivenessButtonClick() {
    constexpr std::string_view function = "onLivenessButtonClick(_:)";
    setContentHidden(true);
    ui::showActivityOverlay(*this);
    if (refusesFurtherAttempt(*this)) {
        settlement_->settle(std::unexpected{ResponseCode::RETRY_LIMIT_REACHED});
        return;
    }
    const auto token = storedScanToken();
    if (!token) {
        log::error(function, "enrollment Failed ----");
        settlement_->settle(std::unexpected{ResponseCode::INVALID_FACEMAP_TOKEN});
        return;
    }
    const auto processor = std::make_shared<EnrollmentProcessor>(self());
    if (processor->begin(*token)) {
        log::info(function, "enrollment Success ----");
        return;
    }
    log::error(function, "The face scan library gave no screen for a session.");
    ui::hideActivityOverlay(*this);
    showStateOfFaceStep();
    settlement_->settle(std::unexpected{ResponseCode::FACETEC_INITIALIZATION_FAILED});
}

void LiveNessCheckVC::setLatestSessionResult(std::shared_ptr<platform::FaceTecSessionResult> result) {
    latestSessionResult_ = std::move(result);
}

void LiveNessCheckVC::scanDidFail(ResponseCode code) {
    settlement_->settle(std::unexpected{code});
}

void LiveNessCheckVC::handleServerFailure(std::string_view data) {
    if (const auto refusal = ErrorManager::refusalIn(data, ScanAnswer::limits)) {
        settlement_->settle(std::unexpected{*refusal});
    }
}

void LiveNessCheckVC::onComplete(std::shared_ptr<const Settlement::Due> success) {
    const bool isSuccess = success != nullptr;
    log::info("onComplete()", isSuccess ? "FaceScan success" : "FaceScan fail");
    const auto result = std::exchange(latestSessionResult_, nullptr);
    if (isSuccess) {
        platform::services().mainQueue->asyncAfter(
            100ms, [self = self(), due = std::move(success)] { self->scanDidSucceed(*due); });
        return;
    }
    // Without a code no outcome is due, because the server's answer has been reported already.
    const auto code =
        result ? faceScanFailure(result->status()) : std::optional{ResponseCode::FACESCAN_NO_SESSION_RESULT};
    platform::services().mainQueue->asyncAfter(
        100ms, [self = self(), result, code, due = code ? settlement_->expect() : nullptr] {
            self->scanDidNotSucceed(result.get(), code, due);
        });
}

void LiveNessCheckVC::scanDidSucceed(const Settlement::Due& due) {
    due.settle(std::make_shared<IdvResult>("", IdvEvents::FACE_SCAN));
    ui::hideActivityOverlay(*this);
    showStateOfFaceStep();
}

void LiveNessCheckVC::scanDidNotSucceed(const platform::FaceTecSessionResult* result, std::optional<ResponseCode> code,
                                        const std::shared_ptr<const Settlement::Due>& due) {
    constexpr std::string_view function = "onComplete()";
    ui::hideActivityOverlay(*this);
    if (result == nullptr) {
        log::info(function, "FaceScan fail no latestSessionResult");
        due->settle(std::unexpected{*code});
    } else {
        log::info(function, [&] { return "FaceScan fail with " + result->description(); });
        if (code) {
            Settlement::settleAfter(100ms, due, std::unexpected{*code});
        } else {
            log::info("faceScanFailedWith(status:)", "Facescan sessionCompletedSuccessfully");
        }
    }
    showStateOfFaceStep();
}

void LiveNessCheckVC::closeButtonTap() {
    const bool leaves = ui::popOrDismiss(*this, [cancellation = settlement_->cancellation()] {
        cancellation->cancel(UIStateManager::shared().faceAuthState);
    });
    if (leaves) {
        settlement_->leave();
    }
}

void LiveNessCheckVC::didGoBack() {
    settlement_->leave()->cancel(UIStateManager::shared().faceAuthState);
}

} // namespace kivo
