#include "services/acquisition/facemap/facetec/ScanUpload.hpp"

#include "Configuration/session/StoredSession.hpp"
#include "Models/SessionKeys.hpp"
#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "platform/json/Json.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace kivo {
namespace {

using namespace std::chrono_literals;

// A scan of many megabytes may take long over a poor mobile connection, but may not stand still.
constexpr auto wholeExchange = 5min;
constexpr auto standstill = 60s;

} // namespace

platform::Data scanBody(std::initializer_list<ScanMember> members) {
    constexpr std::size_t punctuation = 6;
    std::size_t size = 2;
    for (const auto& member : members) {
        size += member.text != nullptr ? member.name.size() + member.text->size() + punctuation : 0;
    }
    platform::Data body;
    body.reserve(size);
    for (const auto& member : members) {
        if (member.text != nullptr) {
            body.push_back(body.empty() ? '{' : ',');
            json::appendRepaired(body, member.name);
            body.push_back(':');
            json::appendRepaired(body, *member.text);
        }
    }
    return body.empty() ? "{}" : std::move(body.append(1, '}'));
}

std::string scanUserAgent(const std::optional<std::string>& sessionId) {
    const auto& vendor = platform::services().faceTec;
    return vendor ? vendor->createFaceTecAPIUserAgentString(sessionId.value_or("")) : std::string{};
}

platform::UrlRequest scanRequest(std::string url, const std::string& userAgent, platform::Data body) {
    return {.url = std::move(url),
            .method = "POST",
            .headers = {{"Content-Type", "application/json"},
                        {"X-Device-Key", Config::DeviceKeyIdentifier().value_or("")},
                        {"User-Agent", userAgent}},
            .body = std::move(body)};
}

std::optional<ScanAnswer> ScanAnswer::decode(std::string_view text) {
    auto object = json::read(text, limits);
    if (!object || object->kind() != json::Kind::object) {
        return std::nullopt;
    }
    ScanAnswer answer;
    const auto* const type = object->textOf(KivoResponseKeys::responseType);
    answer.isAccepted = type != nullptr && *type == KivoResponseKeys::pass;
    auto* const data = object->find(KivoResponseKeys::responseData);
    auto* const blob = data != nullptr ? data->find(KivoResponseKeys::scanResultBlob) : nullptr;
    if (auto* const written = blob != nullptr ? blob->text() : nullptr) {
        answer.scanResultBlob = std::move(*written);
    }
    return answer;
}

/// The delegate of the session, which may outlive the listener.
class ScanUpload::Follower final : public platform::UrlSessionDelegate {
public:
    explicit Follower(Listener listener)
        : isPinned_{pinsAreInForce(*platform::services().bundles->main())}
        , listener_{std::move(listener)} {}

    bool judgesServerTrust() const override { return isPinned_; }

    void didReceiveChallenge(const platform::ServerTrust* serverTrust,
                             std::function<void(platform::AuthChallengeDisposition)> completionHandler) override {
        CommunicationSecurityManager::shared().didReceiveChallenge(serverTrust, std::move(completionHandler));
    }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& /*task*/, std::uint64_t sent,
                         std::uint64_t expected) override {
        // A copy, because the callback may release the upload, and the listener with the upload.
        if (const auto progress = listener_.progress) {
            progress(static_cast<float>(static_cast<double>(sent) / static_cast<double>(expected)));
        }
    }

    void complete(platform::UrlOutcome outcome) {
        const auto listener = std::exchange(listener_, {});
        if (listener.completion) {
            listener.completion(std::move(outcome));
        }
    }

    void stopListening() { listener_ = {}; }

private:
    const bool isPinned_;
    Listener listener_;
};

ScanUpload::ScanUpload(platform::UrlRequest request, Listener listener)
    : follower_{std::make_shared<Follower>(std::move(listener))}
    , session_{platform::services().urlSessions->make({.requestTimeout = wholeExchange,
                                                       .resourceTimeout = wholeExchange,
                                                       .idleTimeout = standstill,
                                                       .responseLimit = ScanAnswer::limits.bytes},
                                                      follower_, platform::services().mainQueue)} {
    request.timeout = wholeExchange;
    session_->dataTask(std::move(request), [follower = follower_](platform::UrlOutcome outcome) {
        follower->complete(std::move(outcome));
    });
}

ScanUpload::~ScanUpload() {
    follower_->stopListening();
}

} // namespace kivo
