#pragma once

#include "Models/ErrorManager.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "NetworkManager/Reachability.hpp"

#include <kivo/SDKEnv.hpp>
#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// The expiry dates of the identity service's certificates, as sent with a join; empty texts when unknown.
struct CertificateExpiryDates {
    std::string leaf;
    std::string intermediate;
};

/// Stands between the SDK and the network: limits pinned sessions to pinned servers, knows the state of the network,
/// and sends the identity service notices of events on the device.
///
/// Notices are sent once and never repeated; their outcome is only logged. Any thread.
class CommunicationSecurityManager final : public platform::UrlSessionDelegate,
                                           public std::enable_shared_from_this<CommunicationSecurityManager> {
public:
    static CommunicationSecurityManager& shared();

    CommunicationSecurityManager(const CommunicationSecurityManager&) = delete;
    CommunicationSecurityManager& operator=(const CommunicationSecurityManager&) = delete;
    ~CommunicationSecurityManager() override;

    void setSdkEnvironment(SDKEnv environment);

    /// The delegate that limits a session to servers with a pinned certificate.
    std::shared_ptr<platform::UrlSessionDelegate> serverJudge() { return shared_from_this(); }

    /// Accepts a server if a certificate of its chain is pinned; other faults of the certificate do not matter.
    void didReceiveChallenge(const platform::ServerTrust* serverTrust,
                             std::function<void(platform::AuthChallengeDisposition)> completionHandler) override;

    bool judgesServerTrust() const override { return true; }

    bool followsUploads() const override { return false; }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& task, std::uint64_t sent,
                         std::uint64_t expected) override;

    /// Starts to watch the network. A monitor that cannot start is kept, stopped.
    void observeReachability();

    /// False only while a monitor reports that the network cannot be reached.
    bool isNetworkAvailable();

    /// The kind of connection in words, such as "WiFi"; empty without a monitor.
    std::string networkType() const;

    /// The certificates' dates for the current environment. With `warn`, also prints a line for each date that is near
    /// at the time `now`.
    CertificateExpiryDates
    certificateExpiryDates(bool warn,
                           std::chrono::system_clock::time_point now = std::chrono::system_clock::now()) const;

    /// Counts an attempt that has been made, and tells the session how many remain.
    void updateRetryCountLimitOnServer(const ActivationResponse* activationSession);

    /// Tells the session how many attempts remain.
    void tellRemainingAttempts(std::int64_t remaining, const ActivationResponse& activationSession);

    /// Tells the session that a vendor library failed.
    void informSessionStateOnThirdPartySdkFailures(const ServerReportModel& reportModel,
                                                   const ActivationResponse* activationSession);

    /// Sends the session a full failure report, under the session's own transaction identifier.
    void updateFailureOnServer(const ServerReportModel& reportModel, const ActivationResponse* activationSession);

    /// Forgets the cookies that came with the answers to notices.
    void forgetCookies() { notices_->forgetCookies(); }

private:
    CommunicationSecurityManager();

    std::shared_ptr<Reachability> reachability() const;
    void checkForReachability(const platform::Notification& notification);
    void sendNotice(std::string_view function, json::ObjectText notice, const ActivationResponse& activationSession);

    std::unique_ptr<RequestSender> notices_;
    mutable std::mutex mutex_;
    std::optional<SDKEnv> sdkEnvironment_;
    mutable std::once_flag isMonitored_;
    mutable std::shared_ptr<Reachability> reachability_;
    std::shared_ptr<platform::Observation> observation_;
};

} // namespace kivo
