#include "services/mirelo/impl/KivoBE.hpp"

#include "Configuration/environment/DeploymentInForce.hpp"
#include "Configuration/logging/Log.hpp"
#include "Configuration/session/ApplicationInformation.hpp"
#include "Configuration/session/StoredSession.hpp"
#include "Models/ErrorManager.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "platform/base/Process.hpp"

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
    json::ObjectText body{};
};

namespace {

// What the requests need besides the texts of the host, in bytes.
constexpr std::size_t roomForNames = 128;
constexpr std::size_t roomForJoin = 1024;

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

std::unexpected<Failure> overtaken() {
    return failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::overtaken,
                  "A later join was answered first; its answer stays in place.");
}

std::unexpected<Failure> withoutNetwork() {
    return failed(ResponseCode::NETWORK_ERROR, FailureKind::noNetwork, "The device has no network.");
}

std::unexpected<Failure> withoutAttempts() {
    return failed(ResponseCode::RETRY_LIMIT_REACHED, FailureKind::noAttempts,
                  "No attempt remains for an upload; a join in this process brings attempts where its answer names a "
                  "limit.");
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
    if (rules_.clearsStoredAnswerFirst && !emptyStoredJoinAnswer()) {
        sessionResponseCompletion(failed(ResponseCode::INVALID_JOIN_SESSION, FailureKind::storage,
                                         "The former session could not be removed from the keychain."));
        return;
    }
    auto dictionary = config ? config->getAsDictionary() : AcquisitionConfig::Dictionary{};
    if (dictionary.empty()) {
        constexpr const char* reason =
            "A join needs an AcquisitionConfig whose ENVIRONMENT is one of the four environments.";
        log::error(function, reason);
        sessionResponseCompletion(
            withoutJoin({ResponseCode::INVALID_JOIN_SESSION, FailureKind::configuration, reason}));
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
        sessionResponseCompletion(withoutJoin(withoutNetwork().error()));
        return;
    }
    {
        const std::scoped_lock lock{mutex_};
        fields_.joinCode = forCode;
        fields_.deviceCode = std::move(deviceCode);
    }
    log::info(function, [this] { return description(); });
    NetworkManager::shared().forgetCookies();
    getJoin(std::move(forCode), std::move(sessionResponseCompletion));
}

BackendOutcome KivoBE::judgeJoin(JoinDone done) const {
    constexpr std::string_view function = "join(forCode:deviceCode:config:sessionResponseCompletion:)";
    log::debug(function,
               [&] { return std::string{"Received join response with result "} + (done ? "true" : "false"); });
    if (!done) {
        return withoutJoin(std::move(done.error()));
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

BackendOutcome KivoBE::withoutJoin(Failure failure) const {
    if (rules_.clearsStoredAnswerFirst) {
        settleStoredJoinAnswer();
    }
    return std::unexpected{std::move(failure)};
}

void KivoBE::getJoin(std::string codeValue, BackendCompletion completion) {
    constexpr std::string_view function = "getJoin(codeValue:completion:)";
    if (rules_.logsClientBeforeJoin) {
        log::debug(function, [this] { return description(); });
    }
    const auto joined = fields();
    log::debug(function, [&] { return "Sending join request for code " + joined.joinCode; });
    log::debug(function, [&] { return "appConfigDictionary: " + log::described(joined.appConfigDictionary); });
    json::ObjectText body{roomForJoin};
    body.add(RequestKeys::action, "init")
        .add(RequestKeys::activationCode, joined.joinCode)
        .add(RequestKeys::deviceCode, joined.deviceCode)
        .add(RequestKeys::appInfo, std::move(json::ObjectText{}.addAll(Environment::applicationInformation())))
        .add(RequestKeys::appConfig, std::move(json::ObjectText{}.addAll(joined.appConfigDictionary)));
    NetworkManager::shared().sendRequest(deploymentInForce()->joinPage(joined.environment), std::move(body),
                                         [this, completion = std::move(completion), codeValue = std::move(codeValue),
                                          join = nextJoinNumber()](NetworkManager::Answer answer) {
                                             completion(judgeJoin(storeAnswer(std::move(answer), codeValue, join)));
                                         });
}

KivoBE::JoinDone KivoBE::storeAnswer(NetworkManager::Answer answer, std::string_view codeValue, JoinNumber join) {
    constexpr auto invalid = ResponseCode::INVALID_JOIN_SESSION;
    const auto lock = lockJoinAnswers();
    if (isOvertaken(join)) {
        return overtaken();
    }
    if (!answer) {
        return std::unexpected{answer.error().failure(invalid)};
    }
    if (!text::isUtf8(*answer)) {
        return failed(invalid, FailureKind::answer, "The answer to the join is not UTF-8 text.");
    }
    if (!storeJoinAnswer(*answer, codeValue, join)) {
        return failed(invalid, FailureKind::storage,
                      "The answer to the join could not be stored; an error line names the reason.");
    }
    return {};
}

void KivoBE::update(std::string tid, std::string action, std::string message, BackendCompletion completion) {
    send({.function = "update(tid:action:message:Completion:)",
          .name = "UPDATE",
          .endpoint = ResponseKeys::updateEndpoint,
          .invalidSession = ResponseCode::INVALID_UPDATE_SESSION,
          .event = IdvEvents::UPDATE_SESSION,
          .body = std::move(json::ObjectText{}
                                .add(RequestKeys::action, action)
                                .add(RequestKeys::message, message)
                                .add(RequestKeys::tid, tid))},
         std::move(completion));
}

void KivoBE::status(BackendCompletion completion) {
    send({.function = "status(tid:Completion:)",
          .name = "STATUS",
          .endpoint = ResponseKeys::statusEndpoint,
          .invalidSession = ResponseCode::INVALID_STATUS_SESSION,
          .event = IdvEvents::SESSION_STATUS},
         std::move(completion));
}

void KivoBE::commit(BackendCompletion completion) {
    send({.function = "commit(tid:Completion:)",
          .name = "COMMIT",
          .endpoint = ResponseKeys::resumeEndpoint,
          .invalidSession = ResponseCode::INVALID_COMMIT_SESSION,
          .event = IdvEvents::COMMIT_SESSION},
         std::move(completion));
}

void KivoBE::send(SessionRequest request, BackendCompletion completion) const {
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
    NetworkManager::shared().sendRequest(settingIn(session->idpConfig, request.endpoint), std::move(request.body),
                                         [completion = std::move(completion), session, event = request.event,
                                          code = request.invalidSession](const NetworkManager::Answer& answer) {
                                             if (!answer) {
                                                 completion(std::unexpected{answer.error().failure(code)});
                                                 return;
                                             }
                                             const auto refusal = ErrorManager::refusalIn(*answer);
                                             completion(refusal ? refused(*refusal) : succeeded(session->tId, event));
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
    json::ObjectText body{data.size() + roomForNames};
    body.add(RequestKeys::source, "remote")
        .add(RequestKeys::acquisitionObject, std::int64_t{rawValue(acquisitionObject)})
        .add(RequestKeys::data, data);
    platform::wipe(data);
    NetworkManager::shared().sendRequest(
        url, std::move(body),
        [this, function, completion = std::move(completion)](const NetworkManager::Answer& answer) {
            const auto outcome = judgeUpload(answer);
            log::debug(function, outcome ? "upload biodata success" : "upload biodata failed");
            completion(outcome);
        });
    CommunicationSecurityManager::shared().tellRemainingAttempts(*remaining, *session);
}

BackendOutcome KivoBE::judgeUpload(const NetworkManager::Answer& answer) const {
    if (!answer) {
        return std::unexpected{answer.error().failure(ResponseCode::BIODATA_UPLOAD_FAILED)};
    }
    const auto refusal = ErrorManager::refusalIn(*answer);
    return refusal ? refused(*refusal) : succeeded(fields().joinCode, IdvEvents::UPLOAD_DOCUMENT);
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
    CommunicationSecurityManager::shared().updateFailureOnServer(reportModel, session.get());
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
