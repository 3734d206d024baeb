#pragma once

#include "Models/ErrorManager.hpp"
#include "Models/InterfaceVersion.hpp"
#include "Models/SessionKeys.hpp"
#include "services/acquisition/ScreenDelegates.hpp"
#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"
#include "services/mirelo/MireloProxy.hpp"

#include <kivo/FinalStatusVC.hpp>
#include <kivo/KivoAPI.hpp>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>

namespace kivo {

/// The session API of one interface version, and the delegate of the screens that the API presents.
class SessionAPI final : public KivoAPI,
                         public QRCodeVCDelegate,
                         public AuthMenuVCDelegate,
                         public LivenessCheckVCDelegate,
                         public OCRScanVCDelegate,
                         public FinalStatusVCDelegate,
                         public std::enable_shared_from_this<SessionAPI> {
public:
    /// The session API of a version; lives as long as the process.
    static const std::shared_ptr<SessionAPI>& shared(InterfaceVersion version);

    /// A session API that sends its requests through `backendClient`, which must outlive it.
    SessionAPI(InterfaceVersion version, MireloProxy& backendClient);

    void setDeviceCode(std::string deviceCode);
    std::string deviceCode() const;
    std::string tid() const;

    std::shared_ptr<ThemeCustomization> sdkTheme() const override;
    void setSdkTheme(std::shared_ptr<ThemeCustomization> theme) override;
    void setContext(std::shared_ptr<platform::ViewController> viewController) override;
    void setTheme(std::shared_ptr<ThemeCustomization> theme) override;
    void setAnswerQueue(std::shared_ptr<platform::DispatchQueue> queue) override;
    std::optional<Failure> lastFailure() const override;
    void acquire(AcquisitionObject object, std::shared_ptr<AcquisitionConfig> config, IdvCompletion response) override;
    void join(std::string forCode, std::shared_ptr<AcquisitionConfig> config, IdvCompletion response) override;
    void update(std::string action, std::string message, IdvCompletion response) override;
    void status(IdvCompletion response) override;
    void commit(IdvCompletion response) override;
    void resumeInBrowser() override;
    void upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion response) override;
    void reset() override;

    void invalidQRCodeScanned() override;
    void activationCodeEntered(std::string code) override;
    void activationCodeScanned(std::string code) override;
    void closeButtonPressed() override;
    void documentFlowDidComplete(IdvOutcome result) override;
    void ocrFlowDidComplete(IdvOutcome result) override;
    void livenessCheckDidComplete(IdvOutcome result) override;
    void ocrScanDidComplete(IdvOutcome result) override;

    void finalStatusDidDisappear() override {}

private:
    /// The state that the host and the backend use from different threads.
    struct State {
        /// Absent until first used, because a process uses only some of the versions.
        std::optional<std::shared_ptr<ThemeCustomization>> sdkTheme;
        std::string tid;
        std::string deviceCode;
        std::string currentSdkStatus;
        std::shared_ptr<platform::ViewController> contextViewController;
        std::shared_ptr<platform::DispatchQueue> answerQueue;
        std::optional<Failure> lastFailure;
        IdvCompletion completionHandlerIdv = [](const IdvOutcome&) {};
        /// The last activation code screen; weak, so that the screen ends with its presentation.
        std::weak_ptr<QRCodeVC> qrCodeVC;
        /// The flag of the last activation code screen; never null.
        std::shared_ptr<std::atomic<bool>> codeHasJoined = std::make_shared<std::atomic<bool>>(false);
    };

    /// Reads the state, or changes it, under its lock.
    template <class Access>
    auto withState(Access access) const {
        const std::scoped_lock lock{mutex_};
        return access(state_);
    }

    template <class Outcome>
    std::function<void(Outcome)> onAnswerQueue(std::function<void(Outcome)> completion) const;
    /// A completion that keeps and logs a failure, tells the host the outcome, and then calls `afterwards`. `operation`
    /// names the request in the log.
    BackendCompletion answering(std::string_view operation, IdvCompletion response, BackendCompletion afterwards);
    /// The same for the outcomes of a screen, whose failures are not logged. A `problem` that is not empty at the
    /// outcome tells the cause in place of the code's message.
    IdvCompletion answeringScreen(IdvCompletion response, std::shared_ptr<const std::string> problem);
    void joinWasTold(const BackendOutcome& outcome);
    void resetAcquisitionStateIfDue();
    /// Runs `work` on the main queue with the last activation code screen, if the screen still exists.
    void withCodeScreen(const std::function<void(QRCodeVC&)>& work);
    BackendCompletion reportingFailures(std::string_view operation, IdvCompletion response);
    /// `leaving` lists the codes with which a person leaves the screen; without a list, the host learns of every
    /// failure.
    void screenDidComplete(const IdvOutcome& result, std::optional<std::span<const ResponseCode>> leaving);
    void completeOnMainQueue(IdvOutcome outcome);
    void completeCodeScreen(ResponseCode failure);
    void validateSendInformCallOnFailure(ResponseCode code);
    void informServerAboutSessionFailure(const ServerReportModel& reportModel, const ActivationResponse& session);

    const SessionRules rules_;
    MireloProxy& backendClient_;
    mutable std::mutex mutex_;
    mutable State state_;
    /// A new session has been joined, and the states of the steps are still those of the former session.
    std::atomic<bool> isAcquisitionResetDue_ = false;
};

} // namespace kivo
