#pragma once

#include <kivo/platform/DispatchQueue.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::platform {

/// Bytes of a message, not necessarily text.
using Data = std::string;

/// A header's name and value.
using HttpHeader = std::pair<std::string, std::string>;

/// One request. The body is moved along, never copied.
struct UrlRequest {
    /// The https address, the method, the headers and the body.
    std::string url{};
    std::string method = "GET";
    std::vector<HttpHeader> headers{};
    Data body{};
    /// The longest time for the whole exchange, waiting included. The shortest of this limit and the session's limits
    /// counts.
    std::chrono::milliseconds timeout{60'000};
};

/// The settings that all requests of a session share. Answers are never cached.
struct UrlSessionConfiguration {
    /// Added to every request that does not carry a header of the same name.
    std::vector<HttpHeader> headers{};
    /// The longest time for an exchange. The shorter of the two limits counts.
    std::chrono::milliseconds requestTimeout{60'000};
    std::chrono::milliseconds resourceTimeout{60'000};
    /// The longest time without a byte in either direction; 0 for no such limit.
    std::chrono::seconds idleTimeout{0};
    /// An answer whose body is longer than this many bytes fails with `UrlErrorKind::answerTooLarge`.
    std::size_t responseLimit = std::size_t{16} * 1024 * 1024;
    /// The same limit for the head, the interim answers (1xx) before it, and the trailers together.
    std::size_t headLimit = std::size_t{64} * 1024;
};

/// A complete HTTP answer.
struct UrlResponse {
    /// The HTTP status and the answer's headers.
    int status = 0;
    std::vector<HttpHeader> headers;
    /// Absent when the status allows no body (204, 205, 304); empty when the body has no bytes.
    std::optional<Data> body;
    /// False when nothing but the end of an HTTP/2 stream says that the body is whole: the answer has no length, and
    /// the server may have ended the stream early.
    bool isProvenWhole = true;
};

/// Why a request ended without an HTTP answer.
enum class UrlErrorKind {
    badUrl,
    unsupportedScheme,
    cannotFindHost,
    cannotConnect,
    secureConnectionFailed,
    serverCertificateUntrusted,
    pinMismatch,
    timedOut,
    connectionLost,
    badAnswer,
    tooManyRedirects,
    answerTooLarge,
    cancelled,
    unknown,
};

/// The kind's name as written above, for logs.
KIVO_EXPORT std::string_view name(UrlErrorKind kind);

/// A failed exchange: its kind, and a text for the person who reads the log. Carries no secret.
struct UrlError {
    /// The kind, and one sentence.
    UrlErrorKind kind = UrlErrorKind::unknown;
    std::string text;
};

/// How a request ended, and who is told.
using UrlOutcome = std::expected<UrlResponse, UrlError>;
using UrlCompletion = std::function<void(UrlOutcome)>;

/// A request on its way.
class KIVO_EXPORT UrlSessionTask {
public:
    virtual ~UrlSessionTask() = default;

    /// Ends the request; its completion receives `cancelled` unless it has ended already. Callable from any thread.
    virtual void cancel() = 0;
};

/// A server's chain of certificates, each in DER form. The server has proved that it holds the key of the first.
///
/// Each certificate is signed by the next certificate, which belongs to an authority. All other certificates that the
/// server presented are left out, so that a foreign certificate cannot slip into the chain.
struct ServerTrust {
    /// The name in the request's address, and the certificates, the server's own first.
    std::string host;
    std::vector<Data> chain;
};

/// The answer to a server-trust challenge.
enum class AuthChallengeDisposition { useCredential, cancelAuthenticationChallenge };

/// Follows the requests of one session. Called on the session's callback queue.
class KIVO_EXPORT UrlSessionDelegate {
public:
    virtual ~UrlSessionDelegate() = default;

    /// Judges the server before any byte of a request leaves. `completionHandler` must be called exactly once. Until
    /// then the request waits, within its time limits. The session's other requests stand still for at most 0.1
    /// seconds.
    ///
    /// A session whose delegate answers true to `judgesServerTrust()` makes no trust evaluation of its own.
    virtual void didReceiveChallenge(const ServerTrust* serverTrust,
                                     std::function<void(AuthChallengeDisposition)> completionHandler) = 0;

    /// Whether `didReceiveChallenge` alone decides about a server; false by default.
    virtual bool judgesServerTrust() const { return false; }

    /// Whether the delegate needs the calls of `didSendBodyData`, which cost time; true by default. A session may leave
    /// them out otherwise.
    virtual bool followsUploads() const { return true; }

    /// The number of bytes of the request's body sent so far, and the body's length.
    virtual void didSendBodyData(const std::shared_ptr<UrlSessionTask>& task, std::uint64_t sent,
                                 std::uint64_t expected) = 0;
};

/// Sends requests side by side over https and reports each exactly once.
///
/// Completions run one at a time on the session's callback queue, never on the caller's stack. Releasing the last
/// reference ends the requests still under way with `cancelled`.
///
/// A request is sent once. A request whose fate is unknown, because its connection ended before the answer, fails and
/// is not repeated. Only an https redirect of the server (at most 20) sends the request on. Only a whole answer counts:
/// an answer without a length that comes neither in chunks nor in frames is refused (`badAnswer`). On HTTP/2 an answer
/// without a length ends with the server's stream, and is not proven whole (`UrlResponse::isProvenWhole`).
///
/// Cookies are kept in memory, for the session's own requests only.
class KIVO_EXPORT UrlSession {
public:
    virtual ~UrlSession() = default;

    /// Starts a request at once. While six requests of the session to the same server are under way, a further request
    /// waits; the wait counts towards its timeouts. Over HTTP/2 a session whose `responseLimit` is at most 1 MiB may
    /// have more requests under way, which share a connection; its first request to a server may then go ahead of the
    /// others, for at most half a second, to learn which protocol the server speaks. An address that `parseUrl()`
    /// refuses, or that is not https, is reported like any failure.
    virtual std::shared_ptr<UrlSessionTask> dataTask(UrlRequest request, UrlCompletion completion) = 0;

    /// Forgets the cookies received so far. Earlier requests may keep their cookies until they end. Later requests know
    /// neither these cookies nor any that an earlier request still receives. Callable from any thread. Does nothing by
    /// default, for a session without cookies.
    virtual void forgetCookies() {}
};

/// Makes sessions.
class KIVO_EXPORT UrlSessions {
public:
    virtual ~UrlSessions() = default;

    /// Makes a session. `delegate` may be null. Without a `delegateQueue`, the session makes a serial queue of its own.
    /// Throws `std::system_error` when the system has no thread left for the session.
    virtual std::shared_ptr<UrlSession> make(UrlSessionConfiguration configuration,
                                             std::shared_ptr<UrlSessionDelegate> delegate = nullptr,
                                             std::shared_ptr<DispatchQueue> delegateQueue = nullptr) = 0;
};

} // namespace kivo::platform
