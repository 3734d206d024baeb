#include "Configuration/logging/Log.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "impl/SessionAPI.hpp"

namespace kivo {

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
