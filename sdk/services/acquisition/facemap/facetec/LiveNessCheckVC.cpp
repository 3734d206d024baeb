#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/theme/ThemeHelpers.hpp"
#include "Models/ErrorManager.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/FaceTecStart.hpp"
#include "services/acquisition/facemap/facetec/ScanAnswer.hpp"
#include "services/acquisition/facemap/facetec/ScanFailures.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "ui/ActivityOverlay.hpp"
#include "ui/DynamicType.hpp"
#include "ui/Later.hpp"
#include "ui/Leaving.hpp"

#include <chrono>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

void LiveNessCheckVC::connect(platform::Interface& interface) {
    interface.outlet("titleInfoLabel", titleInfoLabel_);
    interface.outlet("processDescriptionLabel", processDescriptionLabel_);
    interface.outlet("nextButton", nextButton_);
    interface.outlet("closeButton", closeButton_.button);
    interface.outlet("closeButtonWidth", closeButton_.width);
    interface.outlet("closeButtonHeight", closeButton_.height);

    interface.action("onLivenessButtonClick", [this](const auto&) { onLivenessButtonClick(); });
    interface.action("closeButtonTap", [this](const auto&) { closeButtonTap(); });
}

void LiveNessCheckVC::viewDidLoad() {
    startFaceTec([weak = self()](bool isReady) {
        if (!isReady) {
            ui::later(200ms, weak, [](LiveNessCheckVC& screen) {
                screen.report(std::unexpected{ResponseCode::FACETEC_INITIALIZATION_FAILED});
            });
        }
    });
    if (themeObj) {
        ThemeHelpers::applyTheme(*themeObj);
    }
}

void LiveNessCheckVC::viewWillAppear(bool /*animated*/) {
    applyTheme();
    showStateOfFaceStep();
    applyDynamicType();
}

void LiveNessCheckVC::viewWillDisappear(bool /*animated*/) {
    // The overlay lies over the navigation controller, which stays.
    if (ui::isLeavingStack(*this)) {
        ui::hideActivityOverlay(*this);
    }
}

void LiveNessCheckVC::traitCollectionDidChange() {
    applyDynamicType();
}

void LiveNessCheckVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    const auto& theme = *themeObj;
    ui::applyText(*titleInfoLabel_, theme.faceScanIntroTitle);
    ui::applyFont(*titleInfoLabel_, theme.screenTitleFont);
    titleInfoLabel_->setTextColor(theme.screenTitleColor);

    ui::applyText(*processDescriptionLabel_, theme.faceScanIntroDescription);
    ui::applyFont(*processDescriptionLabel_, theme.descriptionInfoFont);
    processDescriptionLabel_->setTextColor(theme.screenDescriptionInfoTextColor);

    ui::applyTitle(*nextButton_, theme.faceScanIntroNextButtonTitle);
    ui::applyPrimaryButton(*nextButton_, theme, theme.faceScanIntroNextButtonBackgroundColor,
                           theme.faceScanIntroNextButtonTitleColor);
    ui::applyCloseButton(closeButton_, theme);
}

void LiveNessCheckVC::applyDynamicType() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*titleInfoLabel_, themeObj ? themeObj->screenTitleFont : std::nullopt,
                          ui::screenTitleFallback);
    ui::followReadingSize(*processDescriptionLabel_, themeObj ? themeObj->descriptionInfoFont : std::nullopt);
    ui::followReadingSize(*nextButton_, themeObj ? themeObj->primaryButtonFont : std::nullopt);
}

void LiveNessCheckVC::showStateOfFaceStep() {
    const bool isOpen = UIStateManager::shared().faceAuthState == FaceAuthStatus::faceAuthFailedOrInitialized;
    nextButton_->setEnabled(isOpen);
    setContentHidden(!isOpen);
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
    hasSucceeded_ = false;
    setContentHidden(true);
    ui::showActivityOverlay(*this);
    if (refusesFurtherAttempt(*this)) {
        report(std::unexpected{ResponseCode::RETRY_LIMIT_REACHED});
        return;
    }
    const auto token = storedScanToken();
    if (!token) {
        log::error(function, "enrollment Failed ----");
        report(std::unexpected{ResponseCode::INVALID_FACEMAP_TOKEN});
        return;
    }
    latestProcessor_ = std::make_shared<EnrollmentProcessor>(self());
    if (latestProcessor_->begin(*token)) {
        log::info(function, "enrollment Success ----");
        return;
    }
    log::error(function, "The face scan library gave no screen for a session.");
    ui::hideActivityOverlay(*this);
    showStateOfFaceStep();
    report(std::unexpected{ResponseCode::FACETEC_INITIALIZATION_FAILED});
}

void LiveNessCheckVC::showVendorScreen(const std::shared_ptr<platform::ViewController>& vendorScreen) {
    present(vendorScreen, /*animated=*/true);
}

void LiveNessCheckVC::setLatestSessionResult(std::shared_ptr<platform::FaceTecSessionResult> result) {
    latestSessionResult_ = std::move(result);
}

void LiveNessCheckVC::setLatestServerResult(std::string answer) {
    latestServerResult_ = std::move(answer);
}

void LiveNessCheckVC::scanDidFail(ResponseCode code) {
    report(std::unexpected{code});
}

void LiveNessCheckVC::handleServerFailure(std::string_view data) {
    if (const auto refusal = ErrorManager::refusalIn(data, ScanAnswer::limits)) {
        report(std::unexpected{*refusal});
    }
}

void LiveNessCheckVC::onComplete() {
    const bool isSuccess = latestProcessor_ && latestProcessor_->isSuccess();
    log::info("onComplete()", isSuccess ? "FaceScan success" : "FaceScan fail");
    isSuccessDue_ = isSuccess;
    ui::later(100ms, self(), [isSuccess](LiveNessCheckVC& screen) {
        if (!isSuccess) {
            screen.scanDidNotSucceed();
        } else if (screen.isSuccessDue_) {
            screen.scanDidSucceed();
        }
    });
}

void LiveNessCheckVC::scanDidSucceed() {
    isSuccessDue_ = false;
    latestSessionResult_.reset();
    report(std::make_shared<IdvResult>("", IdvEvents::FACE_SCAN));
    ui::hideActivityOverlay(*this);
    showStateOfFaceStep();
}

void LiveNessCheckVC::scanDidNotSucceed() {
    constexpr std::string_view function = "onComplete()";
    ui::hideActivityOverlay(*this);
    if (const auto result = std::exchange(latestSessionResult_, nullptr)) {
        log::info(function, [&] { return "FaceScan fail with " + result->description(); });
        ui::later(100ms, self(),
                  [status = result->status()](LiveNessCheckVC& screen) { screen.faceScanFailedWith(status); });
    } else {
        log::info(function, "FaceScan fail no latestSessionResult");
        report(std::unexpected{ResponseCode::FACESCAN_NO_SESSION_RESULT});
    }
    showStateOfFaceStep();
}

void LiveNessCheckVC::faceScanFailedWith(int status) {
    if (const auto code = faceScanFailure(status)) {
        report(std::unexpected{*code});
    } else {
        log::info("faceScanFailedWith(status:)", "Facescan sessionCompletedSuccessfully");
    }
}

void LiveNessCheckVC::closeButtonTap() {
    // Held apart from the screen, which may be gone when its dismissal is complete.
    ui::popOrDismiss(*this, [listener = delegate] {
        if (const auto self = listener.lock()) {
            self->livenessCheckDidComplete(std::unexpected{ResponseCode::CANCELLED_BY_USER});
        }
    });
}

void LiveNessCheckVC::didGoBack() {
    if (isSuccessDue_) {
        scanDidSucceed();
    } else if (!hasSucceeded_) {
        report(std::unexpected{ResponseCode::CANCELLED_BY_USER});
    }
}

void LiveNessCheckVC::report(IdvOutcome outcome) {
    hasSucceeded_ = hasSucceeded_ || outcome;
    if (const auto listener = delegate.lock()) {
        listener->livenessCheckDidComplete(std::move(outcome));
    }
}

} // namespace kivo
