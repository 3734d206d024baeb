#include "NetworkManager/NetworkManager.hpp"

#include "Configuration/logging/Log.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/base/Process.hpp"
#include "platform/json/Cursor.hpp"

#include <kivo/platform/Services.hpp>

#include <cstddef>
#include <expected>
#include <system_error>
#include <utility>

namespace kivo {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view sendFunction = "sendRequest(urlString:params:success:failure:)";

/// The configuration of every session with the identity service. An exchange may take 180 seconds, of which a
/// `RequestSender` grants 60 to each request.
platform::UrlSessionConfiguration sessionConfiguration() {
    return {.headers = {{"Content-Type", "application/json; charset=UTF-8"}},
            .requestTimeout = 180s,
            .resourceTimeout = 180s,
            // The limit of the JSON reader.
            .responseLimit = std::size_t{1024} * 1024};
}

/// Whether the answer may be only the beginning of what the server had to say. No beginning of a JSON object is JSON.
bool mayBeCut(const platform::UrlResponse& response) {
    if (response.isProvenWhole) {
        return false;
    }
    const auto refusal = json::refusalOf(*response.body);
    return refusal && !refusal->isBeyondLimits();
}

RequestSender::Answer bodyOf(platform::UrlOutcome outcome) {
    if (!outcome) {
        return std::unexpected{TransportError{.cause = outcome.error().kind, .text = outcome.error().text}};
    }
    const int status = outcome->status;
    if (status < 200 || status > 299) {
        return std::unexpected{TransportError{
            .cause = {}, .httpStatus = status, .text = "The server answered with status " + std::to_string(status)}};
    }
    if (!outcome->body) {
        return std::unexpected{
            TransportError{.cause = {}, .httpStatus = status, .text = "The server answered without a body"}};
    }
    if (mayBeCut(*outcome)) {
        return std::unexpected{TransportError{.cause = platform::UrlErrorKind::connectionLost,
                                              .httpStatus = status,
                                              .text = "The server answered without a length, and no whole JSON"}};
    }
    return std::move(*outcome->body);
}

FailureKind kindOf(platform::UrlErrorKind cause) {
    using enum platform::UrlErrorKind;
    switch (cause) {
    case badUrl:
    case unsupportedScheme:
        return FailureKind::address;
    case cannotFindHost:
    case cannotConnect:
    case connectionLost:
        return FailureKind::connection;
    case secureConnectionFailed:
    case serverCertificateUntrusted:
        return FailureKind::certificate;
    case pinMismatch:
        return FailureKind::pins;
    case timedOut:
        return FailureKind::timedOut;
    case badAnswer:
    case tooManyRedirects:
    case answerTooLarge:
        return FailureKind::answer;
    case cancelled:
    case unknown:
        break;
    }
    return FailureKind::other;
}

} // namespace

std::string TransportError::description() const {
    return "TransportError(" + (cause ? std::string{name(*cause)} : "status " + std::to_string(httpStatus)) +
           "): " + text;
}

Failure TransportError::failure(ResponseCode own) const {
    const auto* const further =
        cause == platform::UrlErrorKind::pinMismatch ? "; an error line of the log says why and what to do." : ".";
    return {.code = codeOf(cause, own), .kind = cause ? kindOf(*cause) : FailureKind::status, .text = text + further};
}

ResponseCode codeOf(std::optional<platform::UrlErrorKind> cause, ResponseCode own) {
    return cause == platform::UrlErrorKind::pinMismatch ? ResponseCode::UNSECURE_SERVER_PINNING_FAILED : own;
}

RequestSender::RequestSender(std::shared_ptr<platform::UrlSessionDelegate> judge)
    : judge_{std::move(judge)} {}

void RequestSender::send(std::string urlString, json::ObjectText params, Completion completion) {
    platform::UrlRequest request;
    request.url = std::move(urlString);
    request.method = "POST";
    request.timeout = 60s;
    request.body = std::move(params).take().value_or("");
    std::shared_ptr<platform::UrlSession> session;
    try {
        session = this->session();
    } catch (const std::system_error& noThread) {
        TransportError error{.cause = platform::UrlErrorKind::unknown, .text = noThread.what()};
        log::debug(sendFunction, [&] { return error.description(); });
        completion(std::unexpected{std::move(error)});
        return;
    }
    session->dataTask(std::move(request), [completion = std::move(completion)](platform::UrlOutcome outcome) {
        auto answer = bodyOf(std::move(outcome));
        if (!answer) {
            log::debug(sendFunction, [&] { return answer.error().description(); });
        }
        completion(std::move(answer));
    });
}

void RequestSender::forgetCookies() {
    const std::scoped_lock lock{mutex_};
    for (const auto& session : {withSystemTrust_, pinned_}) {
        if (session) {
            session->forgetCookies();
        }
    }
}

std::shared_ptr<platform::UrlSession> RequestSender::session() {
    const bool isPinned = pinsAreInForce(*platform::services().bundles->main());
    const std::scoped_lock lock{mutex_};
    auto& session = isPinned ? pinned_ : withSystemTrust_;
    if (!session) {
        session = platform::services().urlSessions->make(sessionConfiguration(), isPinned ? judge_ : nullptr);
    }
    return session;
}

NetworkManager& NetworkManager::shared() {
    return platform::Process::current().part<NetworkManager>(
        [] { return new NetworkManager{CommunicationSecurityManager::shared().serverJudge()}; });
}

void NetworkManager::forgetCookies() {
    requests_.forgetCookies();
    CommunicationSecurityManager::shared().forgetCookies();
}

} // namespace kivo
