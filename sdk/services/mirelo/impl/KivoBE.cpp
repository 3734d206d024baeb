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

BackendOutcome succeeded(std::string data, IdvEvents event) {
    return std::make_shared<IdvResult>(std::move(data), event);
}

std::unexpected<Failure> failed(ResponseCode code, FailureKind kind, std::string text) {
    return std::unexpected{Failure{.code = code, .kind = kind, .text = std::move(text)}};
}

std::unexpected<Failure> refused(ResponseCode code) {
    return failed(code, FailureKind::refused,
                  code == ResponseCode::UNKNOWN_ERROR
                      ? "The identity service refused the request without a code that is known."
                      : "The identity service refused the request with " + std::string{name(code)} + ".");
}

std::unexpected<Failure> withoutSession(ResponseCode code) {
    return failed(code, FailureKind::noSession, "No session is stored, or the stored session cannot be read.");
}

std::unexpected<Failure> withoutNetwork() {
    return failed(ResponseCode::NETWORK_ERROR, FailureKind::noNetwork, "The device has no network.");
}

std::unexpected<Failure> withoutAttempts() {
    return failed(ResponseCode::RETRY_LIMIT_REACHED, FailureKind::noAttempts, "No attempt remains for an upload.");
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
                  BackendCompletion sessionResponseCompletion) {
    constexpr std::string_view function = "join(forCode:deviceCode:config:sessionResponseCompletion:)";
    if (rules_.clearsStoredAnswerFirst && !storeJoinAnswer("")) {
        sessionResponseCompletion(failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::storage,
                                         "The former session could not be removed from the keychain."));
        return;
    }
    auto dictionary = config ? config->getAsDictionary() : AcquisitionConfig::Dictionary{};
    if (dictionary.empty()) {
        constexpr const char* reason =
            "A join needs an AcquisitionConfig whose ENVIRONMENT is one of the four environments.";
        log::error(function, reason);
        sessionResponseCompletion(failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::configuration, reason));
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
        sessionResponseCompletion(withoutNetwork());
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

BackendOutcome KivoBE::judgeJoin(JoinDone done) const {
    constexpr std::string_view function = "join(forCode:deviceCode:config:sessionResponseCompletion:)";
    log::debug(function,
               [&] { return std::string{"Received join response with result "} + (done ? "true" : "false"); });
    if (!done) {
        return std::unexpected{done.error()};
    }
    const auto session = storedSession();
    if (!session) {
        return failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::answer,
                      "The answer to the join is no session, or the keychain cannot read the session again.");
    }
    if (session->responseType != ResponseKeys::data) {
        log::debug(function, [&] { return session->encode(); });
        return refused(responseCodeNamed(session->responseCode).value_or(ResponseCode::UNKNOWN_ERROR));
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
            if (!text::isUtf8(answer)) {
                (*shared)(failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::answer,
                                 "The answer to the join is not UTF-8 text."));
            } else if (!storeJoinAnswer(answer)) {
                (*shared)(failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::storage,
                                 "The answer to the join could not be stored; an error line names the reason."));
            } else {
                // A failure to store the code does not fail the join, because the code is never read again.
                storeActivationCode(codeValue);
                (*shared)({});
            }
        },
        [shared](const TransportError& error) {
            (*shared)(std::unexpected{error.failure(ResponseCode::INVALID_JOIN_SESSION)});
        });
}

void KivoBE::update(std::string tid, std::string action, std::string message, BackendCompletion completion) {
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

void KivoBE::status(BackendCompletion completion) {
    send({.function = "status(tid:Completion:)",
          .name = "STATUS",
          .endpoint = ResponseKeys::statusEndpoint,
          .invalidSession = ResponseCode::INVALID_STATUS_SESSION,
          .event = IdvEvents::SESSION_STATUS},
         completion);
}

void KivoBE::commit(BackendCompletion completion) {
    send({.function = "commit(tid:Completion:)",
          .name = "COMMIT",
          .endpoint = ResponseKeys::resumeEndpoint,
          .invalidSession = ResponseCode::INVALID_COMMIT_SESSION,
          .event = IdvEvents::COMMIT_SESSION},
         completion);
}

void KivoBE::send(const SessionRequest& request, const BackendCompletion& completion) const {
    const auto session = storedSession();
    if (!session) {
        completion(withoutSession(request.invalidSession));
        return;
    }
    if (!CommunicationSecurityManager::shared().isNetworkAvailable()) {
        log::debug(request.function, [&] { return "**" + std::string{request.name} + ": Network Unavailable**"; });
        completion(withoutNetwork());
        return;
    }
    NetworkManager::shared().sendRequest(
        settingIn(session->idpConfig, request.endpoint), request.body,
        [completion, tid = session->tId, event = request.event](const platform::Data& answer) {
            const auto refusal = ErrorManager::refusalIn(answer);
            completion(refusal ? refused(*refusal) : succeeded(tid, event));
        },
        [completion, code = request.invalidSession](const TransportError& error) {
            completion(std::unexpected{error.failure(code)});
        });
}

void KivoBE::upload(AcquisitionObject acquisitionObject, std::string data, BackendCompletion completion) {
    constexpr std::string_view function = "upload(acquisitionObject:data:Completion:)";
    const auto session = storedSession();
    const auto url = session ? settingIn(session->idpBiodata, ResponseKeys::biodataEndpoint) : std::string{};
    log::debug(function, [&] { return "upload url " + url; });
    auto& attempts = Attempts::shared();
    if (!session) {
        if (attempts.retryLimit() < 1) {
            completion(withoutAttempts());
            return;
        }
        log::debug(function, "upload biodata failed");
        completion(withoutSession(ResponseCode::BIODATA_UPLOAD_FAILED));
        return;
    }
    const auto remaining = attempts.take();
    if (!remaining) {
        completion(withoutAttempts());
        return;
    }
    json::Object body;
    body.set(RequestKeys::source, "remote");
    body.set(RequestKeys::acquisitionObject, rawValue(acquisitionObject));
    body.set(RequestKeys::data, std::move(data));
    const auto finish = [function, completion](const BackendOutcome& outcome) {
        log::debug(function, outcome ? "upload biodata success" : "upload biodata failed");
        completion(outcome);
    };
    NetworkManager::shared().sendRequest(
        url, body,
        [this, finish](const platform::Data& answer) {
            const auto refusal = ErrorManager::refusalIn(answer);
            finish(refusal ? refused(*refusal) : succeeded(fields().joinCode, IdvEvents::UPLOAD_DOCUMENT));
        },
        [finish](const TransportError& error) {
            finish(std::unexpected{error.failure(ResponseCode::BIODATA_UPLOAD_FAILED)});
        });
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
