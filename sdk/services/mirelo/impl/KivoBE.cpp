#include "services/mirelo/impl/KivoBE.hpp"

#include "Configuration/logging/Log.hpp"
#include "Configuration/session/ApplicationInformation.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/ErrorManager.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/NetworkManager.hpp"
#include "platform/base/Process.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/Text.hpp>
#include <kivo/platform/Url.hpp>

#include <utility>

namespace kivo {

using RequestKeys = KivoRequestKeys;
using ResponseKeys = KivoResponseKeys;

struct KivoBE::SessionRequest {
    std::string_view function;
    std::string_view name;
    std::string_view endpoint;
    ResponseCode invalidSession;
    IdvEvents event;
    json::Value body = json::Object{};
};

namespace {

IdvOutcome succeeded(std::string data, IdvEvents event) {
    return std::make_shared<IdvResult>(std::move(data), event);
}

IdvOutcome failed(ResponseCode code) {
    return std::unexpected{code};
}

json::Object objectOf(const std::vector<std::pair<std::string, std::string>>& texts) {
    json::Object object;
    for (const auto& [key, value] : texts) {
        object.set(key, value);
    }
    return object;
}

} // namespace

KivoBE& KivoBE::shared(InterfaceVersion version) {
    using Clients = std::array<std::unique_ptr<KivoBE>, allInterfaceVersions.size()>;
    const auto& clients = platform::Process::current().part<Clients>([] {
        auto all = std::make_unique<Clients>();
        for (const auto each : allInterfaceVersions) {
            (*all)[static_cast<std::size_t>(each)] = std::make_unique<KivoBE>(each);
        }
        return all.release();
    });
    return *clients[static_cast<std::size_t>(version)];
}

KivoBE::KivoBE(InterfaceVersion version)
    : version_{version}
    , rules_{rowOf(version).backend} {}

void KivoBE::join(std::string forCode, std::string deviceCode, std::shared_ptr<AcquisitionConfig> config,
                  IdvCompletion sessionResponseCompletion) {
    constexpr std::string_view function = "join(forCode:deviceCode:config:sessionResponseCompletion:)";
    if (rules_.clearsStoredAnswerFirst && !storeJoinAnswer("")) {
        sessionResponseCompletion(failed(ResponseCode::INVALID_JOIN_SESSION));
        return;
    }
    auto dictionary = config ? config->getAsDictionary() : AcquisitionConfig::Dictionary{};
    if (dictionary.empty()) {
        log::error(function, "A join needs an AcquisitionConfig whose ENVIRONMENT is one of the four environments.");
        sessionResponseCompletion(failed(ResponseCode::INVALID_JOIN_SESSION));
        return;
    }
    {
        const std::scoped_lock lock{mutex_};
        fields_.environment = config->ENVIRONMENT;
        fields_.appConfigDictionary = std::move(dictionary);
    }
    log::debug(function, [this] { return description(); });
    auto& security = CommunicationSecurityManager::shared();
    security.observeReachability();
    security.setSdkEnvironment(config->ENVIRONMENT);
    if (!security.isNetworkAvailable()) {
        log::debug(function, "**JOIN: Network Unavailable**");
        sessionResponseCompletion(failed(ResponseCode::NETWORK_ERROR));
        return;
    }
    {
        const std::scoped_lock lock{mutex_};
        fields_.joinCode = forCode;
        fields_.deviceCode = std::move(deviceCode);
    }
    log::info(function, [this] { return description(); });
    NetworkManager::shared().forgetCookies();
    getJoin(forCode,
            [this, completion = std::move(sessionResponseCompletion)](JoinDone done) { completion(judgeJoin(done)); });
}

IdvOutcome KivoBE::judgeJoin(JoinDone done) const {
    constexpr std::string_view function = "join(forCode:deviceCode:config:sessionResponseCompletion:)";
    log::debug(function,
               [&] { return std::string{"Received join response with result "} + (done ? "true" : "false"); });
    if (!done) {
        return failed(done.error());
    }
    const auto session = storedSession();
    if (!session) {
        return failed(ResponseCode::INVALID_JOIN_SESSION);
    }
    if (session->responseType != ResponseKeys::data) {
        log::debug(function, [&] { return session->encode(); });
        return failed(responseCodeNamed(session->responseCode));
    }
    Attempts::shared().apply(*session);
    return succeeded(session->tId, IdvEvents::JOIN_SESSION);
}

void KivoBE::getJoin(const std::string& codeValue, std::function<void(JoinDone done)> completion) {
    constexpr std::string_view function = "getJoin(codeValue:completion:)";
    if (rules_.logsClientBeforeJoin) {
        log::debug(function, [this] { return description(); });
    }
    const auto joined = fields();
    log::debug(function, [&] { return "Sending join request for code " + joined.joinCode; });
    log::debug(function, [&] { return "appConfigDictionary: " + log::described(joined.appConfigDictionary); });
    const auto body = json::Value::object({{RequestKeys::action, "init"},
                                           {RequestKeys::activationCode, joined.joinCode},
                                           {RequestKeys::deviceCode, joined.deviceCode},
                                           {RequestKeys::appInfo, objectOf(Environment::applicationInformation())},
                                           {RequestKeys::appConfig, objectOf(joined.appConfigDictionary)}});
    // Both callbacks share the completion; the transport calls exactly one of them.
    const auto shared = std::make_shared<decltype(completion)>(std::move(completion));
    NetworkManager::shared().sendRequest(
        Deployment::current().joinPage(joined.environment), body,
        [shared, codeValue](const platform::Data& answer) {
            if (text::isUtf8(answer) && storeJoinAnswer(answer)) {
                // A failure to store the code does not fail the join, because the code is never read again.
                storeActivationCode(codeValue);
                (*shared)({});
            } else {
                (*shared)(std::unexpected{ResponseCode::INVALID_JOIN_SESSION});
            }
        },
        [shared](const TransportError& error) {
            (*shared)(std::unexpected{codeOf(error.cause, ResponseCode::INVALID_JOIN_SESSION)});
        });
}

void KivoBE::update(std::string tid, std::string action, std::string message, IdvCompletion completion) {
    send({.function = "update(tid:action:message:Completion:)",
          .name = "UPDATE",
          .endpoint = ResponseKeys::updateEndpoint,
          .invalidSession = ResponseCode::INVALID_UPDATE_SESSION,
          .event = IdvEvents::UPDATE_SESSION,
          .body = json::Value::object({{RequestKeys::action, std::move(action)},
                                       {RequestKeys::message, std::move(message)},
                                       {RequestKeys::tid, std::move(tid)}})},
         completion);
}

void KivoBE::status(IdvCompletion completion) {
    send({.function = "status(tid:Completion:)",
          .name = "STATUS",
          .endpoint = ResponseKeys::statusEndpoint,
          .invalidSession = ResponseCode::INVALID_STATUS_SESSION,
          .event = IdvEvents::SESSION_STATUS},
         completion);
}

void KivoBE::commit(IdvCompletion completion) {
    send({.function = "commit(tid:Completion:)",
          .name = "COMMIT",
          .endpoint = ResponseKeys::resumeEndpoint,
          .invalidSession = ResponseCode::INVALID_COMMIT_SESSION,
          .event = IdvEvents::COMMIT_SESSION},
         completion);
}

void KivoBE::send(const SessionRequest& request, const IdvCompletion& completion) const {
    const auto session = storedSession();
    if (!session) {
        completion(failed(request.invalidSession));
        return;
    }
    if (!CommunicationSecurityManager::shared().isNetworkAvailable()) {
        log::debug(request.function, [&] { return "**" + std::string{request.name} + ": Network Unavailable**"; });
        completion(failed(ResponseCode::NETWORK_ERROR));
        return;
    }
    NetworkManager::shared().sendRequest(
        settingIn(session->idpConfig, request.endpoint), request.body,
        [completion, tid = session->tId, event = request.event](const platform::Data& answer) {
            const auto refusal = ErrorManager::refusalIn(answer);
            completion(refusal ? failed(*refusal) : succeeded(tid, event));
        },
        [completion, code = request.invalidSession](const TransportError& error) {
            completion(failed(codeOf(error.cause, code)));
        });
}

void KivoBE::upload(AcquisitionObject acquisitionObject, std::string data, IdvCompletion completion) {
    constexpr std::string_view function = "upload(acquisitionObject:data:Completion:)";
    const auto session = storedSession();
    const auto url = session ? settingIn(session->idpBiodata, ResponseKeys::biodataEndpoint) : std::string{};
    log::debug(function, [&] { return "upload url " + url; });
    auto& attempts = Attempts::shared();
    if (!session) {
        if (attempts.retryLimit() < 1) {
            completion(failed(ResponseCode::RETRY_LIMIT_REACHED));
            return;
        }
        log::debug(function, "upload biodata failed");
        completion(failed(ResponseCode::BIODATA_UPLOAD_FAILED));
        return;
    }
    const auto remaining = attempts.take();
    if (!remaining) {
        completion(failed(ResponseCode::RETRY_LIMIT_REACHED));
        return;
    }
    json::Object body;
    body.set(RequestKeys::source, "remote");
    body.set(RequestKeys::acquisitionObject, rawValue(acquisitionObject));
    body.set(RequestKeys::data, std::move(data));
    const auto finish = [this, function, completion](std::optional<ResponseCode> refusal) {
        log::debug(function, refusal ? "upload biodata failed" : "upload biodata success");
        completion(refusal ? failed(*refusal) : succeeded(fields().joinCode, IdvEvents::UPLOAD_DOCUMENT));
    };
    NetworkManager::shared().sendRequest(
        url, body, [finish](const platform::Data& answer) { finish(ErrorManager::refusalIn(answer)); },
        [finish](const TransportError& error) { finish(codeOf(error.cause, ResponseCode::BIODATA_UPLOAD_FAILED)); });
    CommunicationSecurityManager::shared().tellRemainingAttempts(*remaining, *session);
}

void KivoBE::resumeInBrowser() {
    const auto session = storedSession();
    const auto& page = session ? settingIn(session->idpConfig, ResponseKeys::resumeEndpoint) : std::string{};
    if (platform::parseUrl(page)) {
        platform::services().workspace->open(page);
    }
}

void KivoBE::reset() {
    NetworkManager::shared().forgetCookies();
    if (removeStoredJoinAnswer()) {
        log::debug("reset()", "Session cleared");
    }
}

void KivoBE::update(const ServerReportModel& reportModel) {
    constexpr std::string_view function = "update(reportModel:Completion:)";
    if (rules_.reporting == Reporting::none) {
        return;
    }
    const auto session = storedSession();
    if (rules_.reporting == Reporting::logged) {
        log::debug(function, session ? "Reporting to server" : "Could not report to server without session");
    }
    CommunicationSecurityManager::shared().updateFailureOnServer(reportModel, session ? &*session : nullptr);
}

KivoBE::Fields KivoBE::fields() const {
    const std::scoped_lock lock{mutex_};
    return fields_;
}

std::string KivoBE::description() const {
    const auto current = fields();
    return std::string{namesOf(version_).backendClient} +
           "(configuration: " + log::described(current.appConfigDictionary) +
           ", activation code: " + (current.joinCode.empty() ? "none" : "set") +
           ", device code: " + (current.deviceCode.empty() ? "none" : "set") + ")";
}

} // namespace kivo
