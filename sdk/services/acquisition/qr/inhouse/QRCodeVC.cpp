#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/theme/ReadingSize.hpp"
#include "services/acquisition/qr/inhouse/ActivationCode.hpp"
#include "services/acquisition/qr/inhouse/QRCodeScannerVC.hpp"
#include "ui/Closing.hpp"
#include "ui/TextEntry.hpp"

#include <kivo/platform/ui/LocalizedText.hpp>

#include <utility>

namespace kivo {

using platform::Color;
using platform::View;

namespace {

/// The text beside the boxes after a failed join; empty when the code is to blame.
std::string helpAfter(FailureKind reason) {
    switch (reason) {
    case FailureKind::refused:
        return {};
    case FailureKind::noNetwork:
    case FailureKind::connection:
    case FailureKind::timedOut:
        return platform::localizedText(
            "There is no connection to the service. Check the network, then enter the code again.");
    default:
        return platform::localizedText("That did not work. Wait for a while, then enter the code again.");
    }
}

} // namespace

void QRCodeVC::connect(platform::Interface& interface) {
    constexpr std::array digits{"textFieldDigitOne",  "textFieldDigitTwo",  "textFieldDigitThree",
                                "textFieldDigitFour", "textFieldDigitFive", "textFieldDigitSix"};
    interface.optionalOutlet("activationCodeTextField", activationCodeTextField_);
    interface.optionalOutlet("activationCodeTitleLabel", activationCodeTitleLabel_);
    interface.optionalOutlet("orTitleLabel", orTitleLabel_);
    interface.optionalOutlet("getStartedTitleLabel", getStartedTitleLabel_);
    interface.optionalOutlet("codeErrorLabel", codeErrorLabel_);
    interface.optionalOutlet("scanQRCodeButton", scanQRCodeButton_);
    interface.optionalOutlet("closeButton", closeButton_.button);
    interface.optionalOutlet("closeButtonWidth", closeButton_.width);
    interface.optionalOutlet("closeButtonHeight", closeButton_.height);
    interface.optionalOutlet("stackViewBoxedTextfield", stackViewBoxedTextfield_);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        interface.outlet(digits[i], textFieldDigits_[i]);
    }
    interface.outlet("codeContainerButton", codeContainerButton_);

    interface.action("editingchangeInTextField", [this](const auto&) { editingchangeInTextField(); });
    interface.action("textTextDidChange", [this](const std::shared_ptr<View>& sender) {
        const auto box = std::dynamic_pointer_cast<platform::TextField>(sender);
        if (boxes_ && box) {
            if (!box->text().empty()) {
                setErrorShown(false);
            }
            boxes_->textDidChange(*box);
        }
    });
    interface.action("codeContainerButtonPressed", [this](const auto&) {
        if (boxes_) {
            boxes_->focusCurrent();
        }
    });
    for (const auto* name : {"cancelEditing", "nextPressed"}) {
        interface.action(name, [this](const auto&) {
            if (boxes_) {
                boxes_->cancelEditing();
            }
        });
    }
    interface.action("closeButtonTap", [this](const auto&) { closeButtonTap(); });
}

void QRCodeVC::viewDidLoad() {
    refusedText_ = codeErrorLabel_->text();
    chooseEntryStyle();
    ui::removeKeyOnBackgroundTap(*this);
}

void QRCodeVC::chooseEntryStyle() {
    if (!themeObj) {
        return;
    }
    const bool boxed = themeObj->codeTextFieldStyle == CodeTextFieldStyle::boxed;
    stackViewBoxedTextfield_->setHidden(!boxed);
    codeContainerButton_->setHidden(!boxed);
    activationCodeTextField_->setHidden(boxed);
    if (boxed) {
        gatherBoxes();
    }
}

void QRCodeVC::gatherBoxes() {
    boxes_ = CodeBoxes::make({textFieldDigits_.begin(), textFieldDigits_.end()},
                             {.borderWidth = themeObj->boxedActivationCodeTextFieldBorderWidth,
                              .cornerRadius = themeObj->boxedActivationCodeTextFieldCornerRadius,
                              .activeBorderColor = Color::named("Kivo.TextFieled.active.BorderColor"),
                              .inactiveBorderColor = Color::named("Kivo.TextFieled.BorderColor")},
                             [this](std::string code) { activationCodeEntered(std::move(code)); });
}

void QRCodeVC::viewWillAppear(bool /*animated*/) {
    applyTheme();
    applyDynamicType();
}

void QRCodeVC::viewDidDisappear(bool /*animated*/) {
    if (boxes_) {
        boxes_->clear();
    }
    setErrorShown(false);
}

void QRCodeVC::traitCollectionDidChange() {
    log::info("traitCollectionDidChange(_:)", "The reading size of the activation code screen has changed");
    applyDynamicType();
}

void QRCodeVC::applyTheme() {
    if (!themeObj) {
        return;
    }
    const auto& theme = *themeObj;
    ui::applyScreenTitle(*getStartedTitleLabel_, theme.codeScreenGetStartedTitle, theme);
    ui::applyDescription(*orTitleLabel_, theme.codeScreenOrText, theme);

    if (!theme.codeScreenTextfieldPlaceholder.empty()) {
        activationCodeTextField_->setPlaceholder(theme.codeScreenTextfieldPlaceholder);
    }
    ui::applyFont(*activationCodeTextField_, theme.codeTextFieldFont);
    if (boxes_ && theme.codeTextFieldFont) {
        boxes_->setFont(*theme.codeTextFieldFont);
    }

    ui::applyTitle(*scanQRCodeButton_, theme.codeScreenScanQRCodeButtonTitle);
    ui::applyPrimaryButton(*scanQRCodeButton_, theme, theme.codeScreenScanQRButtonBackgroundColor,
                           theme.codeScreenScanQRButtonTitleColor);
    ui::applyCloseButton(closeButton_, theme);
}

void QRCodeVC::applyDynamicType() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*getStartedTitleLabel_, themeObj, &ThemeCustomization::screenTitleFont,
                          ui::screenTitleFallback);
    ui::followReadingSize(*orTitleLabel_, themeObj, &ThemeCustomization::descriptionInfoFont);
    ui::followReadingSize(*scanQRCodeButton_, themeObj, &ThemeCustomization::primaryButtonFont);
    ui::followReadingSize(*activationCodeTextField_, themeObj, &ThemeCustomization::codeTextFieldFont);
}

void QRCodeVC::editingchangeInTextField() {
    setErrorShown(false);
    if (isCompleteActivationCode(activationCodeTextField_->text())) {
        activationCodeTextField_->resignFirstResponder();
        activationCodeEntered(activationCodeTextField_->text());
    }
}

void QRCodeVC::resetActivationCodeFields(FailureKind reason) {
    if (boxes_) {
        boxes_->reset();
    }
    const auto help = helpAfter(reason);
    codeErrorLabel_->setText(help.empty() ? refusedText_ : help);
    setErrorShown(true);
}

void QRCodeVC::setErrorShown(bool shown) {
    if (!shown && codeErrorLabel_->isHidden()) {
        return;
    }
    codeErrorLabel_->setHidden(!shown);
    const auto tell = [&](platform::TextField& field) {
        field.changeAccessibility([&](platform::Accessibility& accessibility) {
            accessibility.isInvalid = shown;
            accessibility.hint = shown ? codeErrorLabel_->text() : std::string{};
        });
    };
    tell(*activationCodeTextField_);
    // The first box, which has the focus then, tells of the whole row.
    tell(*textFieldDigits_.front());
}

void QRCodeVC::prepareForSegue(const platform::Segue& segue) {
    if (segue.identifier != "scannerSegueID") {
        return;
    }
    if (boxes_) {
        boxes_->reset();
    }
    setErrorShown(false);
    if (const auto scanner = std::dynamic_pointer_cast<QRCodeScannerVC>(segue.destination)) {
        scanner->themeObj = themeObj;
        scanner->delegate = std::static_pointer_cast<QRCodeVC>(shared_from_this());
    }
}

void QRCodeVC::closeButtonTap() {
    // The callback holds the listener and not the screen, which may be gone when its dismissal is complete.
    ui::popOrDismiss(*this, [listener = delegate] {
        if (const auto self = listener.lock()) {
            self->closeButtonPressed();
        }
    });
}

void QRCodeVC::didGoBack() {
    if (const auto listener = delegate.lock(); listener && !*hasJoined) {
        listener->closeButtonPressed();
    }
}

void QRCodeVC::activationCodeEntered(std::string code) {
    if (const auto listener = delegate.lock()) {
        listener->activationCodeEntered(std::move(code));
    }
}

void QRCodeVC::qrCodeScanned(std::string code) {
    if (const auto listener = delegate.lock()) {
        listener->activationCodeScanned(std::move(code));
    }
}

void QRCodeVC::invalidQRCodeScanned() {
    if (const auto listener = delegate.lock()) {
        listener->invalidQRCodeScanned();
    }
}

} // namespace kivo
