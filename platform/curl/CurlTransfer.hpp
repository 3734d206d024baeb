#pragma once

#include "platform/base/DiagnosticsRelay.hpp"
#include "platform/curl/CurlConnections.hpp"
#include "platform/curl/CurlHandles.hpp"
#include "platform/curl/CurlRequest.hpp"
#include "platform/curl/CurlServerTrust.hpp"
#include "platform/curl/HttpAnswer.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo::platform {

class CurlEngine;

/// The settings of one session, shared by its requests.
struct CurlSettings {
    UrlSessionConfiguration configuration;
    /// The file of trusted certificates (PEM); empty for libcurl's own default.
    std::string trustFile;
    std::shared_ptr<UrlSessionDelegate> delegate;
    bool judgesServerTrust = false;
    bool followsUploads = false;
    /// The bytes that libcurl keeps for an answer until they are taken; 0 for libcurl's own default. Where the bytes
    /// hold a whole answer, requests share an HTTP/2 connection. Otherwise libcurl stops the reading of all of them
    /// when an answer's bytes are full, and may forget to go on when that request then ends early.
    std::size_t answerBuffer = 0;
    std::shared_ptr<Diagnostics> diagnostics = relayedDiagnostics();
};

/// One request, from `dataTask()` to its completion.
///
/// Every exchange that libcurl runs for a transfer sends the request at most once. A redirect, a connection that had
/// ended, and a late verdict about the server each lead to a further exchange.
///
/// Belongs to the engine's thread until `conclude()`, then to the callback queue. `cancel()` may come from any thread.
class CurlTransfer final : public UrlSessionTask,
                           public std::enable_shared_from_this<CurlTransfer>,
                           private TrustJudge {
public:
    CurlTransfer(UrlRequest request, UrlCompletion completion, std::shared_ptr<const CurlSettings> settings,
                 std::weak_ptr<CurlEngine> engine);

    void cancel() override;

    bool isCancelled() const { return state_ == State::cancelled; }

    /// Host and port of the address: transfers to the same server share connections. Empty when the request cannot be
    /// sent.
    const std::string& server() const { return server_; }

    /// Whether the delegate has yet to give its verdict about the server.
    bool awaitsVerdict() const { return challenge_ && challenge_->verdict() == TrustChallenge::Verdict::open; }

    /// The end of the time for the whole request, which begins with `dataTask()`.
    std::chrono::steady_clock::time_point deadline() const { return deadline_; }

    // The engine's thread calls the rest of the public functions, except `deliver()`.

    /// Reads the address. Call this function once, before the others; it is no part of the constructor, so that
    /// `dataTask()` returns sooner.
    void findDestination();

    /// Prepares `easy` for the next exchange; false when no exchange is needed. `sockets` and `server` belong to the
    /// engine.
    bool prepare(CURL* easy, CurlSockets& sockets, CurlServer& server);

    /// Takes the result of the exchange on the prepared handle. False when a further exchange follows, for which the
    /// transfer must be prepared again.
    bool conclude(CURLcode code);
    void concludeCancelled();

    /// Ends a transfer for which no exchange is under way.
    void concludeUnsent(CURLcode code);

    /// Sets the cookies of the transfer, which keeps them when the session gets an empty jar.
    void useJar(std::shared_ptr<const CookieJar> jar) { jar_ = std::move(jar); }

    const std::shared_ptr<const CookieJar>& jar() const { return jar_; }

    /// Callback queue: calls the completion.
    void deliver();

private:
    enum class State { underWay, cancelled, delivered };

    CURLcode setOptions(bool wantsFreshConnection, bool mayShare);
    void setMethodAndBody(class CurlOptions& options);
    void setTrust(class CurlOptions& options);
    void setCallbacks(class CurlOptions& options);
    bool needsFurtherExchange(CURLcode code);
    void endExchange(bool isAnswered);
    bool follow();
    UrlOutcome outcomeOf(CURLcode code);
    void reportDescriptors() const;
    /// libcurl's information about the exchange; a default value outside an exchange.
    template <typename T>
    T info(CURLINFO which) const;

    void noteSent(std::uint64_t sent);
    void announceSent();

    bool accepts(std::vector<Data> chain) override;

    UrlRequest request_;
    UrlCompletion completion_;
    std::shared_ptr<const CurlSettings> settings_;
    const std::weak_ptr<CurlEngine> engine_;
    bool carriesBody_;
    const std::chrono::milliseconds timeout_;
    const std::chrono::steady_clock::time_point deadline_;
    const HttpLimits limits_;
    std::expected<Url, UrlError> destination_;
    std::string server_;
    std::atomic<State> state_{State::underWay};

    /// Null outside an exchange.
    CURL* easy_ = nullptr;
    std::optional<CurlSending> sending_;
    std::shared_ptr<const CookieJar> jar_;
    std::optional<CurlHeaderList> headerLines_;
    std::array<char, CURL_ERROR_SIZE> detail_{};
    HttpAnswer answer_;
    std::size_t redirects_ = 0;
    bool isOnOtherServer_ = false;
    std::optional<UrlError> redirectFault_;
    /// How often the server had ended the connection over which the request was about to leave.
    int endedConnections_ = 0;
    std::shared_ptr<const ServerTrust> judged_;
    std::shared_ptr<TrustChallenge> challenge_;
    bool endedUnjudged_ = false;
    UrlOutcome outcome_;

    const std::uint64_t expected_;
    std::atomic<std::uint64_t> sent_{0};
    std::atomic<bool> announcing_{false};
    std::uint64_t announced_ = 0;
};

} // namespace kivo::platform
