#include "sending/PinnedServers.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::reader {
namespace {

constexpr auto listOfPins = "readid_certificates";

/// What stands before the key in what is digested, whatever the kind of the key: the head of an RSA key of 2048 bits.
constexpr std::string_view headOfKey{
    "\x30\x82\x01\x22\x30\x0d\x06\x09\x2a\x86\x48\x86\xf7\x0d\x01\x01\x01\x05\x00\x03\x82\x01\x0f\x00", 24};

class JudgeOfServers final : public platform::UrlSessionDelegate {
public:
    explicit JudgeOfServers(std::set<std::string> pins)
        : pins_{std::move(pins)} {}

    bool judgesServerTrust() const override { return true; }

    bool followsUploads() const override { return false; }

    void didReceiveChallenge(const platform::ServerTrust* server,
                             std::function<void(platform::AuthChallengeDisposition)> completionHandler) override {
        using enum platform::AuthChallengeDisposition;
        const bool isPinned = server != nullptr && std::ranges::any_of(server->chain, [this](const auto& certificate) {
                                  return isListed(certificate);
                              });
        completionHandler(isPinned ? useCredential : cancelAuthenticationChallenge);
    }

    void didSendBodyData(const std::shared_ptr<platform::UrlSessionTask>& /*task*/, std::uint64_t /*sent*/,
                         std::uint64_t /*expected*/) override {}

private:
    bool isListed(std::string_view certificate) const {
        const auto& trust = *platform::services().trust;
        const auto key = trust.externalPublicKey(certificate);
        return key && pins_.contains(trust.base64(trust.sha256(std::string{headOfKey} + *key)));
    }

    const std::set<std::string> pins_;
};

/// No pin at all where an entry is no text: half a list is not the host's list.
std::set<std::string> pinsIn(const platform::PropertyValue& list) {
    std::set<std::string> pins;
    if (const auto* const entries = list.list()) {
        for (const auto& entry : *entries) {
            if (entry.text() == nullptr) {
                return {};
            }
            pins.insert(*entry.text());
        }
    }
    return pins;
}

} // namespace

std::shared_ptr<platform::UrlSessionDelegate> pinnedServers() {
    const auto bundle = platform::services().bundles->main();
    if (!bundle->pathForResource(listOfPins, "plist") && !Deployment::current().requiresPins) {
        return nullptr;
    }
    return std::make_shared<JudgeOfServers>(
        pinsIn(bundle->propertyList(listOfPins).value_or(platform::PropertyValue{})));
}

} // namespace kivo::reader
