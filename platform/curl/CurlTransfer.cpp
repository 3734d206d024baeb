#include "platform/curl/CurlTransfer.hpp"

#include "platform/curl/CurlEngine.hpp"
#include "platform/curl/CurlErrors.hpp"
#include "platform/posix/ExitGuard.hpp"
#include "platform/posix/Files.hpp"

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t mostRedirects = 20;
// A delegate usually answers at once, during the handshake. The session's other requests stand still for the answer,
// for at most this time.
constexpr std::chrono::milliseconds delegatePatience{100};

std::chrono::milliseconds shortestTimeout(const UrlRequest& request, const UrlSessionConfiguration& configuration) {
    const auto shortest = std::min({request.timeout, configuration.requestTimeout, configuration.resourceTimeout});
    return std::clamp<std::chrono::milliseconds>(shortest, std::chrono::milliseconds{1}, std::chrono::hours{24 * 14});
}

// Never 0, which libcurl takes for no limit.
long millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return std::max(static_cast<long>(left.count()), 1L);
}

} // namespace

CurlTransfer::CurlTransfer(UrlRequest request, UrlCompletion completion, std::shared_ptr<const CurlSettings> settings,
                           std::weak_ptr<CurlEngine> engine)
    : request_{std::move(request)}
    , completion_{std::move(completion)}
    , settings_{std::move(settings)}
    , engine_{std::move(engine)}
    , carriesBody_{platform::carriesBody(request_)}
    , timeout_{shortestTimeout(request_, settings_->configuration)}
    , deadline_{std::chrono::steady_clock::now() + timeout_}
    , limits_{.head = settings_->configuration.headLimit, .body = settings_->configuration.responseLimit}
    , expected_{request_.body.size()} {}

void CurlTransfer::cancel() {
    auto expected = State::underWay;
    if (!state_.compare_exchange_strong(expected, State::cancelled)) {
        return;
    }
    if (const auto engine = engine_.lock()) {
        engine->cancel(shared_from_this());
    }
}

void CurlTransfer::findDestination() {
    destination_ = destinationOf(request_, settings_->configuration.headers);
    server_ = serverOf(destination_);
}

bool CurlTransfer::prepare(CURL* easy, CurlSockets& sockets, CurlServer& server) {
    if (!destination_) {
        outcome_ = std::unexpected{destination_.error()};
        return false;
    }
    if (challenge_ && challenge_->verdict() == TrustChallenge::Verdict::refused) {
        outcome_ = std::unexpected{pinMismatchError(*destination_)};
        return false;
    }
    easy_ = easy;
    const bool wantsFresh = endedConnections_ > (server.mayShare() && server.isConnected() ? 1 : 0);
    sending_.emplace(easy, timeout_, sockets, server);
    detail_ = {};
    answer_ = HttpAnswer{limits_, request_.method == "HEAD" && !carriesBody_};
    headerLines_.emplace(settings_->configuration.headers, request_.headers, carriesBody_, isOnOtherServer_);
    if (const auto code = setOptions(wantsFresh, server.mayShare()); code != CURLE_OK) {
        concludeUnsent(code);
        return false;
    }
    return true;
}

CURLcode CurlTransfer::setOptions(bool wantsFreshConnection, bool mayShare) {
    CurlOptions options{easy_};
    setCommonOptions(options);
    options.set(CURLOPT_SHARE, jar_->get());
    options.set(CURLOPT_PRIVATE, this);
    options.set(CURLOPT_ERRORBUFFER, detail_.data());
    options.set(CURLOPT_URL, request_.url.c_str());
    options.set(CURLOPT_FRESH_CONNECT, wantsFreshConnection ? 1L : 0L);
    options.set(CURLOPT_BUFFERSIZE, mayShare ? static_cast<long>(settings_->answerBuffer) : 0L);
    options.set(CURLOPT_TIMEOUT_MS, millisecondsUntil(deadline_));
    if (const auto idle = settings_->configuration.idleTimeout; idle.count() > 0) {
        options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        options.set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(idle.count()));
    }
    if (auto* const lines = headerLines_->get()) {
        options.set(CURLOPT_HTTPHEADER, lines);
    }
    setMethodAndBody(options);
    setTrust(options);
    sending_->watch(options);
    setCallbacks(options);
    return options.result();
}

void CurlTransfer::setCallbacks(CurlOptions& options) {
    options.set(CURLOPT_HEADERDATA, this);
    options.set(
        CURLOPT_HEADERFUNCTION, +[](char* bytes, std::size_t size, std::size_t count, void* self) {
            const std::string_view line{bytes, size * count};
            return static_cast<CurlTransfer*>(self)->answer_.takeLine(line) ? line.size() : 0;
        });
    options.set(CURLOPT_WRITEDATA, this);
    options.set(
        CURLOPT_WRITEFUNCTION, +[](char* bytes, std::size_t size, std::size_t count, void* self) {
            const std::string_view part{bytes, size * count};
            return static_cast<CurlTransfer*>(self)->answer_.takeBody(part) ? part.size() : 0;
        });
    if (settings_->followsUploads && expected_ > 0) {
        options.set(CURLOPT_NOPROGRESS, 0L);
        options.set(CURLOPT_XFERINFODATA, this);
        options.set(
            CURLOPT_XFERINFOFUNCTION, +[](void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
                static_cast<CurlTransfer*>(self)->noteSent(static_cast<std::uint64_t>(sent));
                return 0;
            });
    }
}

void CurlTransfer::setMethodAndBody(CurlOptions& options) {
    if (carriesBody_) {
        options.set(CURLOPT_POST, 1L);
        options.set(CURLOPT_POSTFIELDS, request_.body.data());
        options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    }
    if (request_.method == "HEAD" && !carriesBody_) {
        options.set(CURLOPT_NOBODY, 1L);
    } else if (request_.method != (carriesBody_ ? "POST" : "GET")) {
        options.set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
    }
}

void CurlTransfer::setTrust(CurlOptions& options) {
    if (!settings_->judgesServerTrust) {
        if (!settings_->trustFile.empty()) {
            options.set(CURLOPT_CAINFO, settings_->trustFile.c_str());
            options.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
        }
        return;
    }
    // The delegate alone verifies the server: there is no store of certificates, and no resumed TLS session, in which
    // the server would present no chain.
    options.set(CURLOPT_CAINFO, static_cast<const char*>(nullptr));
    options.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));
    options.set(CURLOPT_SSL_VERIFYHOST, 0L);
    options.set(CURLOPT_SSL_SESSIONID_CACHE, 0L);
    options.set(CURLOPT_SSL_CTX_DATA, this);
    options.set(
        CURLOPT_SSL_CTX_FUNCTION, +[](CURL*, void* context, void* self) {
            auto& transfer = *static_cast<CurlTransfer*>(self);
            letJudge(static_cast<SSL_CTX*>(context), transfer);
            return CURLE_OK;
        });
}

bool CurlTransfer::accepts(std::vector<Data> chain) {
    const auto engine = engine_.lock();
    if (!engine) {
        return false;
    }
    if (!judged_ || judged_->chain != chain) {
        judged_ = std::make_shared<const ServerTrust>(destination_->host, std::move(chain));
        challenge_ = std::make_shared<TrustChallenge>([weak = engine_, self = weak_from_this()] {
            const auto waiting = weak.lock();
            if (auto transfer = self.lock(); waiting && transfer) {
                waiting->goOn(std::move(transfer));
            }
        });
        engine->callBack([settings = settings_, challenge = challenge_, trust = judged_] {
            const CallbackScope scope;
            if (scope) {
                settings->delegate->didReceiveChallenge(trust.get(), TrustChallenge::handlerFor(challenge));
            }
        });
        engine->holdUntil([this] { return isCancelled() || !awaitsVerdict(); },
                          std::min(deadline_, std::chrono::steady_clock::now() + delegatePatience));
    }
    // The verdict is read once: if it came between two readings, the request would leave and then be sent again.
    const auto verdict = challenge_->verdict();
    endedUnjudged_ = verdict == TrustChallenge::Verdict::open;
    return verdict == TrustChallenge::Verdict::accepted;
}

void CurlTransfer::noteSent(std::uint64_t sent) {
    if (sent <= sent_) {
        return;
    }
    sent_ = sent;
    // An announcement that still waits in the queue will take the newer number along.
    if (!announcing_.exchange(true)) {
        if (const auto engine = engine_.lock()) {
            engine->callBack([self = shared_from_this()] { self->announceSent(); });
        }
    }
}

void CurlTransfer::announceSent() {
    const CallbackScope scope;
    announcing_ = false;
    const std::uint64_t sent = sent_;
    if (scope && sent > announced_) {
        announced_ = sent;
        settings_->delegate->didSendBodyData(shared_from_this(), sent, expected_);
    }
}

bool CurlTransfer::conclude(CURLcode code) {
    if (settings_->followsUploads && expected_ > 0) {
        noteSent(static_cast<std::uint64_t>(info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T)));
    }
    const bool isOver = !needsFurtherExchange(code);
    if (isOver) {
        outcome_ = outcomeOf(code);
    }
    endExchange(code == CURLE_OK);
    return isOver;
}

void CurlTransfer::concludeCancelled() {
    outcome_ = std::unexpected{cancelledError()};
    endExchange(false);
}

void CurlTransfer::concludeUnsent(CURLcode code) {
    outcome_ = outcomeOf(code);
    endExchange(false);
}

void CurlTransfer::endExchange(bool isAnswered) {
    easy_ = nullptr;
    if (sending_) {
        sending_->end(isAnswered);
    }
}

bool CurlTransfer::needsFurtherExchange(CURLcode code) {
    if (std::exchange(endedUnjudged_, false)) {
        return true;
    }
    if (sending_ && (sending_->isConnectionOver() || sending_->mustWait())) {
        endedConnections_ += sending_->isConnectionOver() ? 1 : 0;
        return true;
    }
    return code == CURLE_OK && answer_.isRedirect() && answer_.isWhole() && follow();
}

bool CurlTransfer::follow() {
    const auto* const location = info<const char*>(CURLINFO_REDIRECT_URL);
    auto address = location != nullptr ? parseUrl(location) : std::nullopt;
    redirectFault_ = redirectError(address, *destination_);
    if (!redirectFault_ && ++redirects_ > mostRedirects) {
        redirectFault_ = tooManyRedirectsError(*address);
    }
    if (redirectFault_) {
        return false;
    }
    // As browsers do: 303 turns every method but HEAD into GET; 301 and 302 turn only POST into GET.
    const bool isSeeOther = answer_.status() == 303 && request_.method != "HEAD";
    if (isSeeOther || (request_.method == "POST" && answer_.status() <= 302)) {
        request_.method = "GET";
        request_.body = {};
        carriesBody_ = false;
    }
    request_.url = location;
    destination_ = std::move(*address);
    const auto former = std::exchange(server_, serverOf(destination_));
    isOnOtherServer_ = isOnOtherServer_ || server_ != former;
    judged_.reset();
    challenge_.reset();
    return true;
}

UrlOutcome CurlTransfer::outcomeOf(CURLcode code) {
    if (!destination_) {
        return std::unexpected{destination_.error()};
    }
    if (redirectFault_) {
        return std::unexpected{*redirectFault_};
    }
    if (answer_.fault() != HttpAnswer::Fault::none) {
        return std::unexpected{answerError(answer_.fault(), limits_, *destination_)};
    }
    if (code != CURLE_OK && challenge_ && challenge_->verdict() == TrustChallenge::Verdict::refused) {
        return std::unexpected{pinMismatchError(*destination_)};
    }
    const bool isGone = code == CURLE_HTTP2 && answer_.status() == 0;
    if (isGone || (sending_ && sending_->wouldRepeat()) || (code == CURLE_OK && !answer_.isWhole())) {
        return std::unexpected{connectionLostError(*destination_)};
    }
    if (code != CURLE_OK) {
        reportDescriptors();
        return std::unexpected{urlError({.code = code,
                                         .systemError = static_cast<int>(info<long>(CURLINFO_OS_ERRNO)),
                                         .detail = detail_.data(),
                                         .server = *destination_,
                                         .timeout = timeout_,
                                         .trustFile = settings_->trustFile})};
    }
    return answer_.release();
}

// The error numbers of name service, trust store and sockets seldom reach this place, so the descriptors are counted.
void CurlTransfer::reportDescriptors() const {
    if (answer_.status() == 0 && isShortOfDescriptors()) {
        constexpr auto fault = "A request failed, and the process has hardly a file descriptor left; ";
        settings_->diagnostics->report("network", std::string{fault}.append(descriptorRemedy).append("."));
    }
}

template <typename T>
T CurlTransfer::info(CURLINFO which) const {
    T value{};
    if (easy_) {
        curl_easy_getinfo(easy_, which, &value);
    }
    return value;
}

void CurlTransfer::deliver() {
    const CallbackScope scope;
    if (!scope) {
        ExitGuard::shared().keep(shared_from_this());
        return;
    }
    auto expected = State::underWay;
    const bool isCancelled = !state_.compare_exchange_strong(expected, State::delivered);
    auto outcome = isCancelled ? UrlOutcome{std::unexpected{cancelledError()}} : std::move(outcome_);
    // The host may keep the task, so the request's headers, cookies and captures are released now.
    const auto completion = std::exchange(completion_, nullptr);
    settings_.reset();
    request_ = {};
    headerLines_.reset();
    jar_.reset();
    judged_.reset();
    challenge_.reset();
    if (completion) {
        completion(std::move(outcome));
    }
}

} // namespace kivo::platform
