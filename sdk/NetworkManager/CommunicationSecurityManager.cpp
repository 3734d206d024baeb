#include "NetworkManager/CommunicationSecurityManager.hpp"

#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/base/Process.hpp"

#include <kivo/platform/Services.hpp>

#include <any>
#include <utility>

namespace kivo {
namespace {

using RequestKeys = KivoRequestKeys;

constexpr int warnBelowDays = 30;

std::shared_ptr<Reachability> makeMonitor() {
    const auto& services = platform::services();
    auto monitor = Reachability::forInternet(services.reachability, platform::QualityOfService::standard, nullptr,
                                             services.mainQueue);
    return monitor ? *monitor : nullptr;
}

void warnWhenNear(std::chrono::year_month_day date, std::chrono::system_clock::time_point now, SDKEnv environment,
                  std::string_view certificate) {
    const long days = daysUntil(date, now);
    if (days < warnBelowDays) {
        log::print("****" + std::to_string(days) + "**** Days left until " +
                   std::string{SDKEnvHelper::environmentName(environment)} + " Server " + std::string{certificate} +
                   " Certificate Expiration");
    }
}

} // namespace

CommunicationSecurityManager& CommunicationSecurityManager::shared() {
    using Shared = std::shared_ptr<CommunicationSecurityManager>;
    return *platform::Process::current().part<Shared>([] {
        auto manager = std::make_unique<Shared>(new CommunicationSecurityManager);
        (*manager)->notices_ = std::make_unique<RequestSender>(*manager);
        return manager.release();
    });
}

CommunicationSecurityManager::CommunicationSecurityManager() = default;

CommunicationSecurityManager::~CommunicationSecurityManager() = default;

void CommunicationSecurityManager::setSdkEnvironment(SDKEnv environment) {
    const std::scoped_lock lock{mutex_};
    sdkEnvironment_ = environment;
}

void CommunicationSecurityManager::didReceiveChallenge(
    const platform::ServerTrust* serverTrust,
    std::function<void(platform::AuthChallengeDisposition)> completionHandler) {
    constexpr std::string_view function = "urlSession(_:didReceive:completionHandler:)";
    using enum platform::AuthChallengeDisposition;
    if (serverTrust == nullptr || serverTrust->chain.empty()) {
        completionHandler(cancelAuthenticationChallenge);
        return;
    }
    const auto& trust = *platform::services().trust;
    const auto bundle = platform::services().bundles->main();
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const bool isAccepted = isPinned(trust, *bundle, serverTrust->chain);
    log::debug(function, "\n - - - - - - - - - - SSL PINNNING  - - - - - - - - - - \n");
    log::debug(function, isAccepted ? "SUCCESS" : "FAILED");
    log::debug(function, "\n - - - - - - - - - - - -  END - - - - - - - -  - - - - \n");
    if (!isAccepted) {
        log::error(function, [&] { return mismatchReport(trust, *bundle, *serverTrust); });
    } else if (const auto remark = leafRemark(trust, *serverTrust, now)) {
        log::line(LogLevel::warning, function, [&] {
            return "The pin lets " + serverTrust->host + " through although its certificate " + *remark + ".";
        });
    }
    completionHandler(isAccepted ? useCredential : cancelAuthenticationChallenge);
}

void CommunicationSecurityManager::didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& /*task*/,
                                                   std::uint64_t /*sent*/, std::uint64_t /*expected*/) {}

void CommunicationSecurityManager::observeReachability() {
    auto observation = platform::NotificationCenter::defaultCenter()->addObserver(
        std::string{reachabilityChanged},
        [this](const platform::Notification& notification) { checkForReachability(notification); });
    {
        const std::scoped_lock lock{mutex_};
        std::swap(observation_, observation);
    }
    if (const auto monitor = reachability()) {
        std::ignore = monitor->startNotifier();
    }
}

std::shared_ptr<Reachability> CommunicationSecurityManager::reachability() const {
    // Not earlier than the first question: a host may install its own service until then.
    std::call_once(isMonitored_, [this] {
        auto monitor = makeMonitor();
        const std::scoped_lock lock{mutex_};
        reachability_ = std::move(monitor);
    });
    const std::scoped_lock lock{mutex_};
    return reachability_;
}

void CommunicationSecurityManager::checkForReachability(const platform::Notification& notification) {
    const auto* changed = std::any_cast<std::shared_ptr<Reachability>>(&notification.object);
    if (changed == nullptr || *changed == nullptr) {
        return;
    }
    const auto connection = (*changed)->connection();
    auto monitor = makeMonitor();
    {
        const std::scoped_lock lock{mutex_};
        std::swap(reachability_, monitor);
    }
    switch (connection) {
    case Reachability::Connection::wifi:
    case Reachability::Connection::cellular:
        log::print("Reachability: wifi Or Cellular");
        break;
    case Reachability::Connection::unavailable:
        log::print("Reachability: unavailable");
        break;
    case Reachability::Connection::none:
        log::print("Reachability: none");
        break;
    }
}

bool CommunicationSecurityManager::isNetworkAvailable() {
    auto monitor = reachability();
    // A monitor that does not run keeps its first reading, but the network may have changed since.
    if (monitor && !monitor->notifierRunning()) {
        if (auto renewed = makeMonitor()) {
            monitor = renewed;
            const std::scoped_lock lock{mutex_};
            std::swap(reachability_, renewed);
        }
    }
    return !monitor || monitor->connection() != Reachability::Connection::unavailable;
}

std::string CommunicationSecurityManager::networkType() const {
    const auto monitor = reachability();
    return monitor ? std::string{monitor->currentReachabilityString()} : std::string{};
}

CertificateExpiryDates
CommunicationSecurityManager::certificateExpiryDates(bool warn, std::chrono::system_clock::time_point now) const {
    const auto environment = [this] {
        const std::scoped_lock lock{mutex_};
        return sdkEnvironment_;
    }();
    const auto dates = environment ? certificateDatesOf(*environment) : std::nullopt;
    if (dates) {
        if (warn) {
            warnWhenNear(dates->leaf, now, *environment, "Leaf");
            warnWhenNear(dates->intermediate, now, *environment, "Intermediate");
        }
        return {.leaf = monthDayYear(dates->leaf), .intermediate = monthDayYear(dates->intermediate)};
    }
    if (listsPins(*platform::services().bundles->main())) {
        log::print("**** Cannot not convert/find leaf and intermediate dates****");
    } else {
        log::print("**** Could not find readid_certificates.plist file in bundle. \n"
                   " Please import this file from SDK using copy resources settings ****");
    }
    return {};
}

void CommunicationSecurityManager::updateRetryCountLimitOnServer(const ActivationResponse* activationSession) {
    const auto remaining = Attempts::shared().count();
    if (activationSession != nullptr) {
        tellRemainingAttempts(remaining, *activationSession);
    }
}

void CommunicationSecurityManager::tellRemainingAttempts(std::int64_t remaining,
                                                         const ActivationResponse& activationSession) {
    constexpr std::string_view function = "updateRetryCountLimitOnServer(activationSession:)";
    if (!isNetworkAvailable()) {
        log::debug(function, "**UPDATE RetryL: Network unavailable**");
        return;
    }
    json::ObjectText notice;
    notice.add(RequestKeys::action, "inform")
        .add(RequestKeys::message, "I:Attempts count decremented to " + std::to_string(remaining))
        .add(RequestKeys::tid, activationSession.tId);
    notices_->send(settingIn(activationSession.idpConfig, KivoResponseKeys::updateEndpoint), std::move(notice),
                   [function, remaining](const RequestSender::Answer& answer) {
                       log::debug(function, [&] {
                           return answer
                                      ? "**Update RetryL succeeded, current counter " + std::to_string(remaining) + "**"
                                      : std::string{"**Update RetryL failed**"};
                       });
                   });
}

void CommunicationSecurityManager::informSessionStateOnThirdPartySdkFailures(
    const ServerReportModel& reportModel, const ActivationResponse* activationSession) {
    if (activationSession == nullptr) {
        return;
    }
    sendNotice("informSessionStateOnThirdPartySdkFailures(reportModel:activationSession:)",
               std::move(json::ObjectText{}
                             .add(RequestKeys::action, reportModel.action)
                             .add(RequestKeys::tid, activationSession->tId)
                             .add(RequestKeys::message, reportModel.message)),
               *activationSession);
}

void CommunicationSecurityManager::updateFailureOnServer(const ServerReportModel& reportModel,
                                                         const ActivationResponse* activationSession) {
    if (activationSession == nullptr) {
        return;
    }
    sendNotice("updateFailureOnServer(reportModel:activationSession:)",
               std::move(json::ObjectText{}
                             .add(RequestKeys::action, reportModel.action)
                             .add(RequestKeys::tid, activationSession->tId)
                             .add(RequestKeys::os, reportModel.os)
                             .add(RequestKeys::status, reportModel.status)
                             .add(RequestKeys::code, std::to_string(reportModel.code))
                             .add(RequestKeys::message, reportModel.message)),
               *activationSession);
}

void CommunicationSecurityManager::sendNotice(std::string_view function, json::ObjectText notice,
                                              const ActivationResponse& activationSession) {
    if (!isNetworkAvailable()) {
        log::debug(function, "**Inform Server: Network unavailable**");
        return;
    }
    notices_->send(settingIn(activationSession.idpConfig, KivoResponseKeys::updateEndpoint), std::move(notice),
                   [function](const RequestSender::Answer& answer) {
                       log::debug(function, [&] { return answer ? *answer : answer.error().description(); });
                   });
}

} // namespace kivo
