#include "services/acquisition/facemap/facetec/ScanUpload.hpp"

#include "NetworkManager/CommunicationSecurityManager.hpp"
#include "NetworkManager/PublicKeyPins.hpp"
#include "services/acquisition/facemap/facetec/ScanAnswer.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>
#include <cstdint>
#include <utility>

namespace kivo {
namespace {

using namespace std::chrono_literals;

// Megabytes over a poor mobile connection take their time, as long as they move.
constexpr auto wholeExchange = 5min;
constexpr auto standstill = 60s;

} // namespace

/// Stands between the session, which keeps it, and the listener, which may be gone.
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
        // A copy: what is told may let the upload go, and the listener with it.
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
