#include "sending/DocumentProxy.hpp"

#include "crypto/Envelope.hpp"
#include "sending/PinnedServers.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/Url.hpp>

#include <chrono>
#include <cstddef>
#include <optional>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace kivo::reader {
namespace {

using namespace std::chrono_literals;
using platform::readid::FailureReason;
using platform::readid::NFCWithAccessControlFlow;

constexpr auto longestExchange = 60s;
constexpr std::size_t longestAnswer = std::size_t{64} * 1024;
constexpr std::size_t mostKeys = 8;

/// Absent where an entry is no key.
std::optional<std::vector<EnvelopeKey>> keysOf(const NFCWithAccessControlFlow& flow) {
    std::vector<EnvelopeKey> keys;
    if (flow.applicationLevelEncryptionPins.size() > mostKeys) {
        return std::nullopt;
    }
    for (const auto& text : flow.applicationLevelEncryptionPins) {
        auto key = EnvelopeKey::parsed(text);
        if (!key) {
            return std::nullopt;
        }
        keys.push_back(std::move(*key));
    }
    return keys;
}

/// Absent where the document cannot be sealed.
std::optional<std::string> bodyOf(const NFCWithAccessControlFlow& flow, const ReadDocument& document) {
    auto plain = documentMessage(document);
    if (flow.applicationLevelEncryptionPins.empty()) {
        return plain;
    }
    const auto keys = keysOf(flow);
    const auto sealed =
        keys ? sealedMessage({reinterpret_cast<const std::uint8_t*>(plain.data()), plain.size()}, *keys) : std::nullopt;
    return sealed ? std::optional{sealedBody(*sealed)} : std::nullopt;
}

FailureReason reasonFor(platform::UrlErrorKind kind) {
    using enum platform::UrlErrorKind;
    const bool isOfTrust = kind == secureConnectionFailed || kind == serverCertificateUntrusted || kind == pinMismatch;
    return isOfTrust ? FailureReason::sslError : FailureReason::connectionError;
}

FailureReason reasonFor(int status) {
    using enum FailureReason;
    switch (status) {
    case 401:
    case 403:
        return authorisationError;
    case 410:
        return sessionExpired;
    case 429:
        return tooManyRequestsError;
    default:
        return serverSessionError;
    }
}

Sending::Outcome outcomeFor(const platform::UrlOutcome& answer) {
    constexpr int success = 200;
    if (!answer) {
        return std::unexpected{reasonFor(answer.error().kind)};
    }
    if (answer->status != success) {
        return std::unexpected{reasonFor(answer->status)};
    }
    auto session = sessionIn(answer->body.value_or(""));
    if (!session) {
        return std::unexpected{FailureReason::serverSessionError};
    }
    return std::move(*session);
}

class RequestToProxy final : public Sending {
public:
    RequestToProxy(const NFCWithAccessControlFlow& flow, const ReadDocument& document,
                   std::function<void(Outcome)> completion)
        : completion_{std::make_shared<std::function<void(Outcome)>>(std::move(completion))} {
        const auto& services = platform::services();
        auto body = bodyOf(flow, document);
        if (!body) {
            // Refused by `sendingFault` already, but for a certificate whose key encrypts nothing.
            services.mainQueue->async([weak = std::weak_ptr{completion_}] { report(weak, FailureReason::other); });
            return;
        }
        platform::UrlSessionConfiguration configuration;
        configuration.headers = {{"Content-Type", "application/json; charset=UTF-8"}, {"X-Access-Key", flow.accessKey}};
        configuration.requestTimeout = longestExchange;
        configuration.resourceTimeout = longestExchange;
        configuration.responseLimit = longestAnswer;
        try {
            session_ = services.urlSessions->make(
                std::move(configuration), flow.shouldUsePinning ? pinnedServers() : nullptr, services.mainQueue);
        } catch (const std::system_error&) {
            services.mainQueue->async(
                [weak = std::weak_ptr{completion_}] { report(weak, FailureReason::connectionError); });
            return;
        }
        platform::UrlRequest request;
        request.url = flow.baseUrl.value_or("") + "/readings";
        request.method = "POST";
        request.timeout = longestExchange;
        request.body = std::move(*body);
        session_->dataTask(std::move(request), [weak = std::weak_ptr{completion_}](const platform::UrlOutcome& answer) {
            report(weak, outcomeFor(answer));
        });
    }

private:
    template <class Value>
    static void report(const std::weak_ptr<std::function<void(Outcome)>>& weak, Value&& value) {
        if (const auto completion = weak.lock(); completion && *completion) {
            const auto told = std::exchange(*completion, nullptr);
            if constexpr (std::is_same_v<std::decay_t<Value>, FailureReason>) {
                told(std::unexpected{value});
            } else {
                told(std::forward<Value>(value));
            }
        }
    }

    std::shared_ptr<std::function<void(Outcome)>> completion_;
    std::shared_ptr<platform::UrlSession> session_;
};

} // namespace

std::string sendingFault(const NFCWithAccessControlFlow& flow) {
    if (!flow.baseUrl || !flow.baseUrl->starts_with("https://") || !platform::parseUrl(*flow.baseUrl)) {
        return "baseUrl is no https address";
    }
    const auto keys = keysOf(flow);
    if (!keys) {
        return "applicationLevelEncryptionPins has an entry that is neither 32 bytes nor a certificate in base64";
    }
    constexpr std::uint8_t probe[]{0};
    if (!keys->empty() && !sealedMessage(probe, *keys)) {
        return "applicationLevelEncryptionPins has a certificate whose key cannot encrypt";
    }
    return {};
}

std::unique_ptr<Sending> Sending::start(const NFCWithAccessControlFlow& flow, const ReadDocument& document,
                                        std::function<void(Outcome)> completion) {
    return std::make_unique<RequestToProxy>(flow, document, std::move(completion));
}

} // namespace kivo::reader
