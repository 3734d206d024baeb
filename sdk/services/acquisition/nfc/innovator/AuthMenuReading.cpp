#include "Configuration/logging/Log.hpp"
#include "Models/ErrorManager.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "services/acquisition/RetryLimit.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "services/acquisition/nfc/innovator/DocumentReading.hpp"
#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>

#include <array>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

/// The document screen's reading, from the checks before the reading to the report of the outcome.
namespace kivo {

using namespace std::chrono_literals;
namespace readid = platform::readid;

namespace {

constexpr std::string_view resultFunction = "showReadIDUIViewController(flow:)";

std::string description(const std::vector<readid::DocumentType>& types) {
    constexpr std::array names{"passport", "identityCardTD1", "identityCardTD2"};
    std::string text;
    for (const auto type : types) {
        text += (text.empty() ? "" : ", ") + std::string{names.at(static_cast<std::size_t>(type))};
    }
    return "[" + text + "]";
}

} // namespace

void AuthMenuVC::navigateToVelmoraScreen() {
    constexpr std::string_view function = "navigateToVelmoraScreen()";
    log::info(function, [this] {
        return "Proceeding with Allowed Documents " +
               (readIdUiFlow_ ? description(readIdUiFlow_->allowedDocumentTypes) : std::string{});
    });
    if (!readIdUiFlow_) {
        log::error(function, "ReadID failed to initiate");
        Settlement::settleAfter(100ms, settlement_->expect(),
                                std::unexpected{ResponseCode::READID_INITIALIZATION_FAILED});
    } else if (mayRead()) {
        showReadIDUIViewController();
    }
}

bool AuthMenuVC::mayRead() {
    if (refusesFurtherAttempt(*this)) {
        settlement_->settle(std::unexpected{ResponseCode::RETRY_LIMIT_REACHED});
        return false;
    }
    if (readIdUiFlow_->accessKey.empty()) {
        settlement_->settle(std::unexpected{ResponseCode::EMPTY_ACCESS_KEY});
        return false;
    }
    if (readIdUiFlow_->baseUrl.value_or("").empty()) {
        settlement_->settle(std::unexpected{ResponseCode::EMPTY_BIODATA_PROXY});
        return false;
    }
    return true;
}

void AuthMenuVC::showReadIDUIViewController() {
    const auto begun =
        platform::services().readID->identify(self(), platform::ModalPresentationStyle::fullScreen, readIdUiFlow_,
                                              [weak = std::weak_ptr{self()}](const readid::ReadIDResult& result) {
                                                  if (const auto screen = weak.lock()) {
                                                      screen->readingDidEnd(result);
                                                  }
                                              });
    if (!begun) {
        readingDidNotBegin(begun.error());
    }
}

void AuthMenuVC::readingDidNotBegin(const readid::ReadIDError& error) {
    using enum readid::ReadIDError::Kind;
    auto code = ResponseCode::UNKNOWN_ERROR;
    if (error.kind == invalidConfiguration) {
        log::error(resultFunction, [&] { return "Error in configuration: " + error.message; });
        code = ResponseCode::INVALID_CONFIGURATION;
    } else if (error.kind == nfcNotSupported) {
        log::error(resultFunction, "NFC not supported for this device");
        code = ResponseCode::NFC_NOT_SUPPORTED;
    } else {
        log::print("Error creating ReadIDUI ViewController: " + error.message);
    }
    settlement_->settle(std::unexpected{code});
    closeUnlessDocumentsAreListed();
}

void AuthMenuVC::readingDidEnd(const readid::ReadIDResult& result) {
    if (result) {
        readingDidSucceed(*result);
    } else {
        readingDidFail(result.error());
    }
    countAttempt(qrCodeResponse_.get());
}

void AuthMenuVC::readingDidSucceed(const readid::SuccessValue& value) {
    if (const auto* const both = std::get_if<readid::VIZNFC>(&value)) {
        log::info(resultFunction, "VizNfc only result");
        nfcResult_ = both->nfc;
        sendDocumentReadNotification();
    } else if (const auto* const chip = std::get_if<readid::NFCOnly>(&value)) {
        log::info(resultFunction, "NFC only result ");
        nfcResult_ = chip->nfc;
        log::info(resultFunction, "NFC result assigned");
        sendDocumentReadNotification();
    } else if (std::holds_alternative<readid::VIZOnly>(value)) {
        log::info(resultFunction, "Viz only result");
    } else {
        log::error(resultFunction, "ReadID UI result unknown");
        settlement_->settle(std::unexpected{ResponseCode::UNKNOWN_ERROR});
        closeUnlessDocumentsAreListed();
    }
}

void AuthMenuVC::readingDidFail(const readid::Failure& failure) {
    settlement_->settle(std::unexpected{readingFailureCode(failure.failureReason, isDocListAvailable_)});
    if (failure.failureReason == readid::FailureReason::userCancelled && failure.viz) {
        log::debug(resultFunction, [&] {
            return "MRZ: " + std::to_string(failure.viz->mrzData.mrz.lines.size()) + " lines, not shown";
        });
    }
    closeUnlessDocumentsAreListed();
}

void AuthMenuVC::sendDocumentReadNotification() {
    const auto due = settlement_->expect();
    UIStateManager::shared().docAuthState = DocAuthStatus::docAuthSuccess;
    if (!themeObj || themeObj->enableActivityIndicator) {
        ui::showActivityOverlay(*this);
    } else {
        ui::hideActivityOverlay(*this);
    }
    const auto* const settings = qrCodeResponse_ ? &qrCodeResponse_->idpBiodata : nullptr;
    if (settings == nullptr || !settings->contains(KivoResponseKeys::biodataEndpoint)) {
        platform::services().mainQueue->asyncAfter(100ms, [self = self(), due] {
            ui::hideActivityOverlay(*self);
            due->settle(std::unexpected{ResponseCode::INVALID_BIODATA_ENDPOINT});
        });
        return;
    }
    const auto& session = nfcResult_->readIDSession;
    sendDocumentReadNotice(settingIn(*settings, KivoResponseKeys::biodataEndpoint),
                           session ? session->sessionId() : std::string{},
                           [self = self(), due](const NoticeOutcome& outcome) { self->noticeDidEnd(outcome, due); });
}

void AuthMenuVC::noticeDidEnd(const NoticeOutcome& outcome, const std::shared_ptr<const Settlement::Due>& due) {
    if (!outcome) {
        ui::hideActivityOverlay(*this);
        Settlement::settleAfter(100ms, due, std::unexpected{outcome.error()});
        return;
    }
    const auto refusal = ErrorManager::refusalIn(*outcome);
    platform::services().mainQueue->asyncAfter(300ms, [self = self(), due, refusal] {
        if (refusal) {
            ui::hideActivityOverlay(*self);
            due->settle(std::unexpected{*refusal});
            return;
        }
        due->settle(std::make_shared<IdvResult>("", IdvEvents::DOCUMENT_SCAN));
        ui::hideActivityOverlay(*self);
        if (self->nfcResult_ && self->nfcResult_->readIDSession) {
            self->nfcResult_->readIDSession->finish([] {});
        }
    });
}

} // namespace kivo
