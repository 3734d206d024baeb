#pragma once

#include "Configuration/settings/Settings.hpp"
#include "NetworkManager/Attempts.hpp"
#include "NetworkManager/StoredSession.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/simulator/Reachability.hpp>

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kivo::test {

using namespace std::chrono_literals;

using Heard = std::vector<std::string>;

/// Looks that only this vendor has.
struct VendorLooks final : platform::readid::UIResources {
    VendorLooks() { textSize = 21; }
};

/// The vendor's library in the test's hands: it keeps what it is given.
class DocumentVendor final : public platform::ReadID {
public:
    std::optional<platform::readid::ReadIDError> refusal;
    std::shared_ptr<platform::readid::NFCWithAccessControlFlow> flow;
    std::function<void(platform::readid::ReadIDResult)> handler;

    std::shared_ptr<platform::readid::UIResources> makeUIResources() override {
        return std::make_shared<VendorLooks>();
    }

    std::expected<void, platform::readid::ReadIDError>
    identify(const std::shared_ptr<platform::ViewController>& /*from*/, platform::ModalPresentationStyle style,
             const std::shared_ptr<platform::readid::NFCWithAccessControlFlow>& given,
             std::function<void(platform::readid::ReadIDResult)> then) override {
        EXPECT_EQ(style, platform::ModalPresentationStyle::fullScreen);
        flow = given;
        if (refusal) {
            return std::unexpected{*refusal};
        }
        handler = std::move(then);
        return {};
    }
};

struct VendorSession final : platform::readid::ReadIDSession {
    int finished = 0;

    std::string sessionId() const override { return "R1"; }

    void finish(std::function<void()> completionHandler) override {
        ++finished;
        completionHandler();
    }
};

struct DocumentReports final : AuthMenuVCDelegate {
    Heard heard;

    void documentFlowDidComplete(IdvOutcome result) override { heard.push_back(said(result)); }

    void ocrFlowDidComplete(IdvOutcome result) override { heard.push_back("ID scan " + said(result)); }

    static std::string said(const IdvOutcome& result) {
        return std::string{result ? IdvEventsHelper::eventName((*result)->responseType()) : name(result.error())};
    }
};

/// Made in place: GCC 12 takes a moved variant for uninitialised under the sanitizers.
template <class Value>
platform::readid::ReadIDResult success(const Value& value) {
    return platform::readid::ReadIDResult{std::in_place, std::in_place_type<Value>, value};
}

inline constexpr auto biodata = R"("biodata-proxy":"https://proxy","biodata-access-key":"A","biodata-encrypt-key":"E",)"
                                R"("biodata-endpoint":"https://notice")";

/// A host with a joined session, a network that the test answers for, and no library that reads documents.
class DocumentScreenAlone : public HostScreenFixture {
protected:
    DocumentScreenAlone() {
        platform::Services services;
        services.urlSessions = network;
        services.reachability = std::make_shared<simulator::Reachability>();
        platform::install(services);
    }

    void joinWith(const std::string& list, const std::string& idpBiodata = biodata) {
        storeJoinAnswer(R"({"response-type":"data","tid":"T1","app-config":{"app-doclist":")" + list +
                        R"("},"idp-config":{"update-endpoint":"https://update"},"idp-biodata":{)" + idpBiodata + "}}");
        Attempts::shared().setShouldApplyRetryLimit(true);
        Attempts::shared().setRetryLimit(5);
        UIStateManager::shared().docAuthState = DocAuthStatus::docAuthFailedOrInitialized;
        network->requests.clear();
    }

    std::shared_ptr<AuthMenuVC> shown(const std::shared_ptr<ThemeCustomization>& theme = nullptr) {
        auto screen = makeScreen<AuthMenuVC>("AuthMenuVCID");
        screen->delegate = reports;
        screen->themeObj = theme;
        reports->heard.clear();
        vendor->handler = nullptr;
        push(screen);
        return screen;
    }

    /// The screen with a reading under way: the passport chosen from the list or, without one, begun by itself.
    std::shared_ptr<AuthMenuVC> reading(const std::string& list, const std::string& idpBiodata = biodata) {
        joinWith(list, idpBiodata);
        auto screen = shown();
        if (list == "true") {
            choose(*screen, 1);
        } else {
            advance(100ms);
        }
        return screen;
    }

    static void choose(AuthMenuVC& screen, int tag) { EXPECT_TRUE(screen.view()->viewWithTag(tag)->touch()); }

    void chipWasRead() const {
        vendor->handler(success(platform::readid::NFCOnly{.nfc = {.readIDSession = vendorSession}}));
    }

    /// What the retry notices said, in order.
    Heard attempts() const {
        Heard texts;
        for (const auto& each : network->requests) {
            if (each.request.url == "https://update") {
                texts.push_back(each.request.body);
            }
        }
        return texts;
    }

    bool isOnTop(const std::shared_ptr<AuthMenuVC>& screen) const { return navigation->topViewController() == screen; }

    bool hasOverlay() const { return navigation->view()->viewWithTag(999) != nullptr; }

    /// What was heard before a delay of that length ends, and right then.
    void expectHeardAfter(std::chrono::milliseconds delay, const Heard& heard) {
        if (delay > 0ms) {
            advance(delay - 1ms);
            EXPECT_THAT(reports->heard, testing::IsEmpty());
            advance(1ms);
        }
        EXPECT_EQ(reports->heard, heard);
    }

    std::shared_ptr<DocumentVendor> vendor = std::make_shared<DocumentVendor>();
    std::shared_ptr<VendorSession> vendorSession = std::make_shared<VendorSession>();
    std::shared_ptr<ScriptedUrlSessions> network = std::make_shared<ScriptedUrlSessions>();
    std::shared_ptr<DocumentReports> reports = std::make_shared<DocumentReports>();
};

class DocumentScreen : public DocumentScreenAlone {
protected:
    DocumentScreen() {
        platform::Services services;
        services.readID = vendor;
        platform::install(services);
    }
};

} // namespace kivo::test
