#include "Configuration/logging/Log.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "impl/SessionAPI.hpp"

namespace kivo {

void SessionAPI::validateSendInformCallOnFailure(ResponseCode code) {
    const auto reportModel =
        withState([&](const State& state) { return ServerReportModel::of(code, state.tid, state.currentSdkStatus); });
    log::debug("validateSendInformCallOnFailure(reportModel:)",
               [&] { return "Validating responseCode " + std::to_string(reportModel.code); });
    informServerAboutSessionFailure(reportModel);
}

void SessionAPI::informServerAboutSessionFailure(const ServerReportModel& reportModel) {
    constexpr std::string_view function = "informServerAboutSessionFailure(reportModel:)";
    const bool throughClient = rules_.reportRoute == ReportRoute::backendClient;
    const auto session = storedSession();
    if (!session || (throughClient && settingIn(session->idpConfig, KivoResponseKeys::updateEndpoint).empty())) {
        if (throughClient) {
            log::debug(function, "Join Session not found to inform error, logging error locally.");
        }
        return;
    }
    log::debug(function, [&] { return "Something failed: informing server: message " + reportModel.description(); });
    if (throughClient) {
        backendClient_.update(reportModel);
    } else {
        CommunicationSecurityManager::shared().informSessionStateOnThirdPartySdkFailures(reportModel, &*session);
    }
}

} // namespace kivo
