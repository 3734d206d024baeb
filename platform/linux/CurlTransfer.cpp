#include "linux/CurlTransfer.hpp"

#include "linux/CurlEngine.hpp"
#include "linux/CurlErrors.hpp"
#include "linux/CurlOptions.hpp"
#include "linux/ExitGuard.hpp"

#include <algorithm>
#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t usualHeaderCount = 8;

std::chrono::milliseconds shortestTimeout(const UrlRequest& request, const UrlSessionConfiguration& configuration) {
    const auto shortest = std::min({request.timeout, configuration.requestTimeout, configuration.resourceTimeout});
    return std::clamp<std::chrono::milliseconds>(shortest, std::chrono::milliseconds{1}, std::chrono::hours{24 * 14});
}

// To libcurl zero means no limit at all.
long millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return std::max(static_cast<long>(left.count()), 1L);
}

std::string serverOf(const std::string& address) {
    const ParsedUrl url{address};
    return url.scheme() + "://" + url.host() + ":" + url.port();
}

bool allowsBody(long status) {
    return status != 204 && status != 205 && status != 304;
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
    , fault_{faultIn(request_, settings_->configuration.headers)}
    , server_{fault_ ? "" : serverOf(request_.url)}
    , headerLines_{settings_->configuration.headers, request_.headers, carriesBody_}
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

bool CurlTransfer::prepare(CURL* easy) {
    if (fault_) {
        outcome_ = std::unexpected{*fault_};
        return false;
    }
    easy_ = easy;
    if (const auto code = setOptions(); code != CURLE_OK) {
        conclude(code);
        return false;
    }
    return true;
}

CURLcode CurlTransfer::setOptions() {
    CurlOptions options{easy_};
    setCommonOptions(options);
    options.set(CURLOPT_PRIVATE, this);
    options.set(CURLOPT_ERRORBUFFER, detail_.data());
    options.set(CURLOPT_URL, request_.url.c_str());
    options.set(CURLOPT_TIMEOUT_MS, millisecondsUntil(deadline_));
    if (const auto idle = settings_->configuration.idleTimeout; idle.count() > 0) {
        options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        options.set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(idle.count()));
    }
    if (auto* const lines = headerLines_.get()) {
        options.set(CURLOPT_HTTPHEADER, lines);
    }
    setMethodAndBody(options);
    setTrust(options);

    options.set(CURLOPT_HEADERDATA, this);
    options.set(
        CURLOPT_HEADERFUNCTION, +[](char* bytes, std::size_t size, std::size_t count, void* self) {
            const std::string_view line{bytes, size * count};
            return static_cast<CurlTransfer*>(self)->takeHeaderLine(line) ? line.size() : 0;
        });
    options.set(CURLOPT_WRITEDATA, this);
    options.set(
        CURLOPT_WRITEFUNCTION, +[](char* bytes, std::size_t size, std::size_t count, void* self) {
            const std::string_view part{bytes, size * count};
            return static_cast<CurlTransfer*>(self)->takeBody(part) ? part.size() : 0;
        });
    if (settings_->delegate && expected_ > 0) {
        options.set(CURLOPT_NOPROGRESS, 0L);
        options.set(CURLOPT_XFERINFODATA, this);
        options.set(
            CURLOPT_XFERINFOFUNCTION, +[](void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
                static_cast<CurlTransfer*>(self)->noteSent(static_cast<std::uint64_t>(sent));
                return 0;
            });
    }
    return options.result();
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
        // Only POST turns into GET at a redirect; other methods are repeated, with their body.
        options.set(CURLOPT_POSTREDIR, static_cast<long>(CURL_REDIR_POST_301 | CURL_REDIR_POST_302));
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
    // The peer stays verified, by nobody but the delegate: without store and without a resumed session, for which
    // no chain would be presented.
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
    challenge_ = std::make_shared<TrustChallenge>([weak = engine_] {
        if (const auto waiting = weak.lock()) {
            waiting->wake();
        }
    });
    auto trust = std::make_shared<const ServerTrust>(ParsedUrl{currentUrl()}.host(), std::move(chain));
    engine->callBack([settings = settings_, challenge = challenge_, trust = std::move(trust)] {
        const CallbackScope scope;
        if (scope) {
            settings->delegate->didReceiveChallenge(trust.get(), TrustChallenge::handlerFor(challenge));
        }
    });
    engine->holdUntil([this] { return isCancelled() || challenge_->verdict() != TrustChallenge::Verdict::open; },
                      deadline_);
    return challenge_->verdict() == TrustChallenge::Verdict::accepted;
}

bool CurlTransfer::takeHeaderLine(std::string_view line) {
    while (line.ends_with('\n') || line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    if (headersComplete_) {
        // The next answer of a chain of redirects, or trailers, which nobody asked for.
        if (line.starts_with("HTTP/")) {
            headersComplete_ = false;
            headers_.clear();
            headers_.reserve(usualHeaderCount);
            const auto status = line.substr(std::min(line.find(' '), line.size()));
            if (status.starts_with(" 303")) {
                // "See other" means to fetch, whatever the method was. A HEAD stays one: it is no custom method.
                curl_easy_setopt(easy_, CURLOPT_CUSTOMREQUEST, nullptr);
            }
        }
        return true;
    }
    const auto trim = [](std::string_view text) {
        const auto first = text.find_first_not_of(" \t");
        return first == text.npos ? std::string_view{} : text.substr(first, text.find_last_not_of(" \t") - first + 1);
    };
    const auto colon = line.find(':');
    if (line.empty()) {
        headersComplete_ = true;
    } else if ((line.front() == ' ' || line.front() == '\t') && !headers_.empty()) {
        headers_.back().second.append(" ").append(trim(line));
    } else if (colon != line.npos) {
        headers_.emplace_back(trim(line.substr(0, colon)), trim(line.substr(colon + 1)));
    }
    return true;
}

bool CurlTransfer::takeBody(std::string_view bytes) {
    const auto limit = settings_->configuration.responseLimit;
    if (!std::exchange(bodyBegun_, true)) {
        const auto announced = info<curl_off_t>(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
        tooLarge_ = announced > 0 && static_cast<std::uint64_t>(announced) > limit;
        if (!tooLarge_ && announced > 0) {
            body_.reserve(static_cast<std::size_t>(announced));
        }
    }
    tooLarge_ = tooLarge_ || bytes.size() > limit - body_.size();
    if (!tooLarge_) {
        body_.append(bytes);
    }
    return !tooLarge_;
}

void CurlTransfer::noteSent(std::uint64_t sent) {
    if (sent <= sent_) {
        return;
    }
    sent_ = sent;
    // While one announcement waits in the queue, it takes the newer number along.
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

void CurlTransfer::conclude(CURLcode code) {
    if (settings_->delegate && expected_ > 0) {
        noteSent(static_cast<std::uint64_t>(info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T)));
    }
    outcome_ = outcomeOf(code);
    easy_ = nullptr;
}

void CurlTransfer::concludeCancelled() {
    outcome_ = std::unexpected{cancelledError()};
    easy_ = nullptr;
}

UrlOutcome CurlTransfer::outcomeOf(CURLcode code) {
    if (tooLarge_) {
        return std::unexpected{answerTooLargeError(settings_->configuration.responseLimit)};
    }
    if (code != CURLE_OK && challenge_ && challenge_->verdict() == TrustChallenge::Verdict::refused) {
        return std::unexpected{pinMismatchError(currentUrl())};
    }
    if (code != CURLE_OK && challenge_ && challenge_->verdict() == TrustChallenge::Verdict::open) {
        if (std::chrono::steady_clock::now() < deadline_) {
            return std::unexpected{cancelledError()};
        }
        code = CURLE_OPERATION_TIMEDOUT;
    }
    if (code != CURLE_OK) {
        return std::unexpected{urlError({.code = code,
                                         .systemError = static_cast<int>(info<long>(CURLINFO_OS_ERRNO)),
                                         .detail = detail_.data(),
                                         .url = currentUrl(),
                                         .timeout = timeout_,
                                         .trustFile = settings_->trustFile})};
    }
    const auto status = info<long>(CURLINFO_RESPONSE_CODE);
    UrlResponse response{static_cast<int>(status), std::move(headers_), std::nullopt};
    if (allowsBody(status)) {
        response.body = std::move(body_);
    }
    return response;
}

template <typename T>
T CurlTransfer::info(CURLINFO which) const {
    T value{};
    if (easy_) {
        curl_easy_getinfo(easy_, which, &value);
    }
    return value;
}

std::string CurlTransfer::currentUrl() const {
    const auto* const url = info<const char*>(CURLINFO_EFFECTIVE_URL);
    return url ? url : request_.url;
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
    // A host may hold on to the task; what hangs on it goes now.
    const auto completion = std::exchange(completion_, nullptr);
    settings_.reset();
    request_ = {};
    if (completion) {
        completion(std::move(outcome));
    }
}

} // namespace kivo::platform
