#pragma once

#include "linux/CurlRequest.hpp"
#include "linux/CurlServerTrust.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <curl/curl.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::platform {

class CurlEngine;

/// What the requests of one session share.
struct CurlSettings {
    UrlSessionConfiguration configuration;
    /// Certificates to trust, PEM; empty for libcurl's own default.
    std::string trustFile;
    std::shared_ptr<UrlSessionDelegate> delegate;
    bool judgesServerTrust = false;
};

/// One request, from being handed over to its completion.
///
/// Belongs to the engine's thread until `conclude()`, then to the callback queue; `cancel()` comes from anywhere.
class CurlTransfer final : public UrlSessionTask,
                           public std::enable_shared_from_this<CurlTransfer>,
                           private TrustJudge {
public:
    CurlTransfer(UrlRequest request, UrlCompletion completion, std::shared_ptr<const CurlSettings> settings,
                 std::weak_ptr<CurlEngine> engine);

    void cancel() override;

    bool isCancelled() const { return state_ == State::cancelled; }

    /// Scheme, host and port of the address: transfers with the same share connections. Empty when there is no point in
    /// sending it.
    const std::string& server() const { return server_; }

    /// When the time for the whole exchange is up, counted from the handing over.
    std::chrono::steady_clock::time_point deadline() const { return deadline_; }

    /// Engine's thread: the rest of the public functions but `deliver()`.
    ///
    /// Prepares `easy` for the request; false when there is no point in sending it.
    bool prepare(CURL* easy);

    /// Takes the result of the exchange that ran on the prepared handle, or why there was none.
    void conclude(CURLcode code);
    void concludeCancelled();

    /// The handle in use while the engine works on the transfer.
    CURL* easy() const { return easy_; }

    /// Callback queue: calls the completion.
    void deliver();

private:
    enum class State { underWay, cancelled, delivered };

    CURLcode setOptions();
    void setMethodAndBody(class CurlOptions& options);
    void setTrust(class CurlOptions& options);
    UrlOutcome outcomeOf(CURLcode code);
    std::string currentUrl() const;
    /// What the handle tells of the exchange; nothing before it has begun.
    template <typename T>
    T info(CURLINFO which) const;

    bool takeHeaderLine(std::string_view line);
    bool takeBody(std::string_view bytes);

    void noteSent(std::uint64_t sent);
    void announceSent();

    bool accepts(std::vector<Data> chain) override;

    UrlRequest request_;
    UrlCompletion completion_;
    std::shared_ptr<const CurlSettings> settings_;
    const std::weak_ptr<CurlEngine> engine_;
    const bool carriesBody_;
    const std::chrono::milliseconds timeout_;
    const std::chrono::steady_clock::time_point deadline_;
    const std::optional<UrlError> fault_;
    const std::string server_;
    CurlHeaderList headerLines_;
    std::atomic<State> state_{State::underWay};

    /// Null until `prepare()`: while the transfer waits for others to end.
    CURL* easy_ = nullptr;
    std::array<char, CURL_ERROR_SIZE> detail_{};
    std::vector<HttpHeader> headers_;
    Data body_;
    bool headersComplete_ = true;
    bool bodyBegun_ = false;
    bool tooLarge_ = false;
    std::shared_ptr<TrustChallenge> challenge_;
    UrlOutcome outcome_;

    const std::uint64_t expected_;
    std::atomic<std::uint64_t> sent_{0};
    std::atomic<bool> announcing_{false};
    std::uint64_t announced_ = 0;
};

} // namespace kivo::platform
