#include "impl/SessionAPI.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "impl/Completions.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/mirelo/impl/KivoBE.hpp"

#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace kivo {
namespace {

constexpr std::array leavingDocuments{ResponseCode::USER_CANCELLED, ResponseCode::BACK_NAVIGATION};
constexpr std::array leavingFaceScan{ResponseCode::CANCELLED,
                                     ResponseCode::USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT};

IdvOutcome failed(ResponseCode code) {
    return std::unexpected{code};
}

/// A message of a code as a sentence; some of the messages end with a full stop themselves.
std::string sentence(std::string_view message) {
    return std::string{message} + (message.ends_with('.') ? "" : ".");
}

bool isTold(ResponseCode code, UntoldFailures untold, std::span<const ResponseCode> leaving) {
    if (untold == UntoldFailures::none) {
        return true;
    }
    if (code <= ResponseCode::STATUS_AUTH_FAILED) {
        return false;
    }
    return untold == UntoldFailures::statusCodes || std::ranges::find(leaving, code) == leaving.end();
}

void setDocumentState(const IdvOutcome& result) {
    UIStateManager::shared().docAuthState =
        result ? DocAuthStatus::docAuthSuccess : DocAuthStatus::docAuthFailedOrInitialized;
}

} // namespace

const std::shared_ptr<SessionAPI>& SessionAPI::shared(InterfaceVersion version) {
    using Sessions = std::array<std::shared_ptr<SessionAPI>, allInterfaceVersions.size()>;
    const auto& sessions = platform::Process::current().part<Sessions>([] {
        auto all = std::make_unique<Sessions>();
        for (const auto each : allInterfaceVersions) {
            (*all)[static_cast<std::size_t>(each)] = std::make_shared<SessionAPI>(each, KivoBE::shared(each));
        }
        return all.release();
    });
    return sessions[static_cast<std::size_t>(version)];
}

SessionAPI::SessionAPI(InterfaceVersion version, MireloProxy& backendClient)
    : rules_{rowOf(version).session}
    , backendClient_{backendClient} {}

void SessionAPI::setDeviceCode(std::string deviceCode) {
    withState([&](State& state) { state.deviceCode = std::move(deviceCode); });
}

std::string SessionAPI::deviceCode() const {
    return withState([](const State& state) { return state.deviceCode; });
}

std::string SessionAPI::tid() const {
    return withState([](const State& state) { return state.tid; });
}

std::shared_ptr<ThemeCustomization> SessionAPI::sdkTheme() const {
    if (const auto theme = withState([](const State& state) { return state.sdkTheme; })) {
        return *theme;
    }
    // Made outside the lock, because it reads the host's bundle and the machine's fonts.
    const auto made = std::make_shared<ThemeCustomization>();
    return withState([&](State& state) {
        if (!state.sdkTheme) {
            state.sdkTheme = made;
        }
        return *state.sdkTheme;
    });
}

void SessionAPI::setSdkTheme(std::shared_ptr<ThemeCustomization> theme) {
    std::optional replacement{std::move(theme)};
    withState([&](State& state) { std::swap(state.sdkTheme, replacement); });
}

void SessionAPI::setTheme(std::shared_ptr<ThemeCustomization> theme) {
    setSdkTheme(std::move(theme));
}

void SessionAPI::setContext(std::shared_ptr<platform::ViewController> viewController) {
    withState([&](State& state) { std::swap(state.contextViewController, viewController); });
}

void SessionAPI::join(std::string forCode, std::shared_ptr<AcquisitionConfig> config, IdvCompletion response) {
    auto [device, codeHasJoined] =
        withState([](const State& state) { return std::pair{state.deviceCode, state.codeHasJoined}; });
    *codeHasJoined = false;
    auto told = answering("join(forCode:config:response:)", std::move(response),
                          [this](const BackendOutcome& outcome) { joinWasTold(outcome); });
    backendClient_.join(
        std::move(forCode), std::move(device), std::move(config),
        [this, hasJoined = std::move(codeHasJoined), told = std::move(told)](const BackendOutcome& outcome) {
            if (outcome) {
                withState([&](State& state) { state.tid = (*outcome)->data(); });
                *hasJoined = true;
                isAcquisitionResetDue_ = true;
            }
            told(outcome);
        });
}

void SessionAPI::joinWasTold(const BackendOutcome& outcome) {
    if (outcome) {
        resetAcquisitionStateIfDue();
        return;
    }
    // The service and the code screen are at the later join's session.
    if (outcome.error().kind == FailureKind::overtaken) {
        return;
    }
    if (rules_.reportsRequestFailures) {
        validateSendInformCallOnFailure(outcome.error().code);
    }
    if (rules_.resetsCodeBoxes) {
        withCodeScreen([reason = outcome.error().kind](QRCodeVC& screen) { screen.resetActivationCodeFields(reason); });
    }
}

void SessionAPI::setAnswerQueue(std::shared_ptr<platform::DispatchQueue> queue) {
    withState([&](State& state) { std::swap(state.answerQueue, queue); });
}

std::optional<Failure> SessionAPI::lastFailure() const {
    return withState([](const State& state) { return state.lastFailure; });
}

template <class Outcome>
std::function<void(Outcome)> SessionAPI::onAnswerQueue(std::function<void(Outcome)> completion) const {
    auto queue = withState([](const State& state) { return state.answerQueue; });
    if (queue) {
        return runningOn(std::move(queue), std::move(completion));
    }
    return completion;
}

BackendCompletion SessionAPI::answering(std::string_view operation, IdvCompletion response,
                                        BackendCompletion afterwards) {
    return onAnswerQueue<BackendOutcome>([this, operation, response = std::move(response),
                                          afterwards = std::move(afterwards)](const BackendOutcome& outcome) {
        if (!outcome) {
            const auto& failure = outcome.error();
            log::line(LogLevel::warning, operation, [&] {
                return std::string{name(failure.code)} + " (" + std::string{name(failure.kind)} + "): " + failure.text;
            });
            withState([&](State& state) { state.lastFailure = failure; });
        }
        if (response) {
            response(outcome ? IdvOutcome{*outcome} : failed(outcome.error().code));
        }
        afterwards(outcome);
    });
}

IdvCompletion SessionAPI::answeringScreen(IdvCompletion response, std::shared_ptr<const std::string> problem) {
    return onAnswerQueue<IdvOutcome>(
        [this, response = std::move(response), problem = std::move(problem)](const IdvOutcome& outcome) {
            if (!outcome) {
                const auto code = outcome.error();
                withState([&](State& state) {
                    state.lastFailure = {.code = code,
                                         .kind = FailureKind::screen,
                                         .text = problem->empty() ? sentence(message(code)) : *problem};
                });
            }
            if (response) {
                response(outcome);
            }
        });
}

void SessionAPI::withCodeScreen(const std::function<void(QRCodeVC&)>& work) {
    platform::services().mainQueue->async([weak = weak_from_this(), work] {
        const auto self = weak.lock();
        const auto screen = self ? self->withState([](const State& state) { return state.qrCodeVC.lock(); }) : nullptr;
        if (screen) {
            work(*screen);
        }
    });
}

/// Runs after the host has learned of its session, or earlier, when the host shows the next screen: that screen already
/// belongs to the new session.
void SessionAPI::resetAcquisitionStateIfDue() {
    if (isAcquisitionResetDue_.exchange(false)) {
        UIStateManager::shared().docAuthState = DocAuthStatus::docAuthFailedOrInitialized;
        UIStateManager::shared().faceAuthState = FaceAuthStatus::faceAuthFailedOrInitialized;
    }
}

void SessionAPI::update(std::string action, std::string message, IdvCompletion response) {
    auto tid = withState([&](State& state) {
        state.currentSdkStatus = message;
        return state.tid;
    });
    backendClient_.update(std::move(tid), std::move(action), std::move(message),
                          reportingFailures("update(action:message:response:)", std::move(response)));
}

void SessionAPI::status(IdvCompletion response) {
    backendClient_.status(reportingFailures("status(response:)", std::move(response)));
}

void SessionAPI::commit(IdvCompletion response) {
    if (rules_.logsCommit) {
        log::debug("commit(response:)", "Calling commit");
    }
    backendClient_.commit(reportingFailures("commit(response:)", std::move(response)));
}

void SessionAPI::upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion response) {
    backendClient_.upload(acquisitionObject, std::move(data),
                          reportingFailures("upload(acquisitionObject:data:response:)", std::move(response)));
}

void SessionAPI::resumeInBrowser() {
    backendClient_.resumeInBrowser();
}

void SessionAPI::reset() {
    backendClient_.reset();
}

BackendCompletion SessionAPI::reportingFailures(std::string_view operation, IdvCompletion response) {
    return answering(operation, std::move(response), [this](const BackendOutcome& outcome) {
        if (!outcome && rules_.reportsRequestFailures) {
            validateSendInformCallOnFailure(outcome.error().code);
        }
    });
}

void SessionAPI::activationCodeEntered(std::string code) {
    const auto handler = withState([](const State& state) { return state.completionHandlerIdv; });
    handler(std::make_shared<IdvResult>(std::move(code), IdvEvents::SCAN_QR_CODE));
}

void SessionAPI::activationCodeScanned(std::string code) {
    activationCodeEntered(std::move(code));
}

void SessionAPI::invalidQRCodeScanned() {
    completeCodeScreen(ResponseCode::UNKNOWN_QR_CODE);
}

void SessionAPI::closeButtonPressed() {
    if (rules_.reportsCancellation) {
        log::debug("closeButtonPressed()", [] {
            return "Cancelled: Processing error\nResponseCode: " +
                   std::to_string(code(ResponseCode::CANCELLED_BY_USER));
        });
    }
    completeCodeScreen(ResponseCode::CANCELLED_BY_USER);
    if (rules_.reportsCancellation) {
        validateSendInformCallOnFailure(ResponseCode::CANCELLED_BY_USER);
    }
}

void SessionAPI::completeCodeScreen(ResponseCode failure) {
    if (rules_.queuesCodeScreenFailures) {
        completeOnMainQueue(failed(failure));
        return;
    }
    const auto handler = withState([](const State& state) { return state.completionHandlerIdv; });
    handler(failed(failure));
}

void SessionAPI::documentFlowDidComplete(IdvOutcome result) {
    setDocumentState(result);
    screenDidComplete(result, leavingDocuments);
}

void SessionAPI::livenessCheckDidComplete(IdvOutcome result) {
    UIStateManager::shared().faceAuthState =
        result ? FaceAuthStatus::faceAuthSuccess : FaceAuthStatus::faceAuthFailedOrInitialized;
    screenDidComplete(result, leavingFaceScan);
}

void SessionAPI::ocrScanDidComplete(IdvOutcome result) {
    setDocumentState(result);
    screenDidComplete(result, std::nullopt);
}

void SessionAPI::ocrFlowDidComplete(IdvOutcome result) {
    screenDidComplete(result, std::nullopt);
}

void SessionAPI::screenDidComplete(const IdvOutcome& result, std::optional<std::span<const ResponseCode>> leaving) {
    if (result || !leaving || isTold(result.error(), rules_.untoldFailures, *leaving)) {
        completeOnMainQueue(result);
    }
    if (!result) {
        validateSendInformCallOnFailure(result.error());
    }
}

void SessionAPI::completeOnMainQueue(IdvOutcome outcome) {
    platform::services().mainQueue->async([self = shared_from_this(), outcome = std::move(outcome)] {
        // The handler is read now, because the host may have started another acquisition since the outcome.
        const auto handler = self->withState([](const State& state) { return state.completionHandlerIdv; });
        handler(outcome);
    });
}

void SessionAPI::validateSendInformCallOnFailure(ResponseCode code) {
    constexpr std::string_view function = "validateSendInformCallOnFailure(reportModel:)";
    const auto reportModel =
        withState([&](const State& state) { return ServerReportModel::of(code, state.tid, state.currentSdkStatus); });
    log::debug(function, [&] { return "Validating responseCode " + std::to_string(reportModel.code); });
    const bool throughClient = rules_.reportRoute == ReportRoute::backendClient;
    const auto session = storedSession();
    if (session && (!throughClient || !settingIn(session->idpConfig, KivoResponseKeys::updateEndpoint).empty())) {
        informServerAboutSessionFailure(reportModel, *session);
    } else if (throughClient) {
        log::debug(function, "Join Session not found to inform error, logging error locally.");
    }
}

void SessionAPI::informServerAboutSessionFailure(const ServerReportModel& reportModel,
                                                 const ActivationResponse& session) {
    log::debug("informServerAboutSessionFailure(reportModel:)",
               [&] { return "Something failed: informing server: message " + reportModel.description(); });
    if (rules_.reportRoute == ReportRoute::backendClient) {
        backendClient_.update(reportModel);
    } else {
        CommunicationSecurityManager::shared().informSessionStateOnThirdPartySdkFailures(reportModel, &session);
    }
}

} // namespace kivo
