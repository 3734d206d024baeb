#pragma once

#include "platform/json/ObjectText.hpp"

#include <kivo/Failure.hpp>
#include <kivo/platform/UrlSession.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace kivo {

/// The reason why a request got no usable answer.
struct TransportError {
    /// The failure of the transport; absent after an answer with a status outside 200 to 299 or without a body.
    std::optional<platform::UrlErrorKind> cause;
    /// The answer's status; 0 without an answer.
    int httpStatus = 0;
    std::string text;

    std::string description() const;

    /// The failure as the host receives it. The code is `own`, unless the server was not a pinned server.
    Failure failure(ResponseCode own) const;
};

/// The code for a request that got no usable answer: `own`, unless the server was not a pinned server.
ResponseCode codeOf(std::optional<platform::UrlErrorKind> cause, ResponseCode own);

/// Sends JSON to the identity service, over connections and a callback queue that no other sender uses. As many
/// requests to a server are under way at once as `UrlSession::dataTask()` says. Any thread.
class RequestSender {
public:
    /// The answer's body, or why there is none.
    using Answer = std::expected<platform::Data, TransportError>;
    using Completion = std::function<void(Answer answer)>;

    /// `judge` decides about servers where pins are in force. Never null: a pinned session without a judge would trust
    /// every server that the system trusts.
    explicit RequestSender(std::shared_ptr<platform::UrlSessionDelegate> judge);

    /// POSTs `params`, to a pinned server only where pins are in force, and calls the completion exactly once, on the
    /// session's callback queue. Where no thread can be started, and in a forked child, the completion runs on the
    /// calling thread before the operation returns.
    ///
    /// Parameters that are not valid JSON (a text that is not UTF-8) become an empty body.
    void send(std::string urlString, json::ObjectText params, Completion completion);

    /// Forgets the cookies of the service.
    void forgetCookies();

private:
    std::shared_ptr<platform::UrlSession> session();

    const std::shared_ptr<platform::UrlSessionDelegate> judge_;
    std::mutex mutex_;
    /// Both sessions are made when first needed.
    std::shared_ptr<platform::UrlSession> withSystemTrust_;
    std::shared_ptr<platform::UrlSession> pinned_;
};

/// The sender of the host's requests. Notices have a sender of their own, so that no request of the host waits for a
/// notice.
class NetworkManager {
public:
    using Answer = RequestSender::Answer;

    static NetworkManager& shared();

    /// Sends a request of the host; see `RequestSender::send`.
    void sendRequest(std::string urlString, json::ObjectText params, RequestSender::Completion completion) {
        requests_.send(std::move(urlString), std::move(params), std::move(completion));
    }

    /// Forgets the cookies of the service, also those of notices, so that the next session is not linked to the former
    /// session.
    void forgetCookies();

private:
    explicit NetworkManager(std::shared_ptr<platform::UrlSessionDelegate> judge)
        : requests_{std::move(judge)} {}

    RequestSender requests_;
};

} // namespace kivo
