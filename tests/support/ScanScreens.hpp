#pragma once

#include "NetworkManager/StoredSession.hpp"
#include "services/acquisition/facemap/facetec/ScreenDelegates.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/ScanVendor.hpp"
#include "support/ScriptedUrlSessions.hpp"

#include <kivo/platform/ui/AlertController.hpp>

#include <memory>
#include <string>
#include <thread>

namespace kivo::test {

using namespace std::chrono_literals;

/// Writes down what a scan screen reports and when, and keeps the state as the session API does.
class ScanReports final : public LivenessCheckVCDelegate, public OCRScanVCDelegate {
public:
    explicit ScanReports(std::shared_ptr<platform::ManualClock> clock)
        : clock_{std::move(clock)} {}

    /// Such as "TIMEOUT 200 ms".
    Texts heard;
    std::thread::id thread;

    /// From now on.
    void restart() {
        heard.clear();
        start_ = clock_->now();
    }

    void livenessCheckDidComplete(IdvOutcome result) override {
        using enum FaceAuthStatus;
        UIStateManager::shared().faceAuthState = result ? faceAuthSuccess : faceAuthFailedOrInitialized;
        ocrScanDidComplete(std::move(result));
    }

    void ocrScanDidComplete(IdvOutcome result) override {
        thread = std::this_thread::get_id();
        heard.push_back(
            std::string{result ? IdvEventsHelper::eventName((*result)->responseType()) : name(result.error())} + ' ' +
            std::to_string((clock_->now() - start_) / 1ms) + " ms");
    }

private:
    std::shared_ptr<platform::ManualClock> clock_;
    platform::Clock::Time start_{0};
};

/// A host with a face scan library in the test's hands, a joined session and a network that the test answers for.
class ScanScreens : public HostScreenFixture {
protected:
    ScanScreens() {
        platform::Services services;
        services.faceTec = vendor;
        services.urlSessions = sessions;
        platform::install(services);
        joinWith(R"("facemap-token":"token")");
    }

    /// A session whose face scan settings are these and the usual ones.
    static void joinWith(const std::string& settings) {
        storeJoinAnswer(
            R"({"response-type":"data","tid":"T1","idp-config":{"update-endpoint":"https://idp.example/update"},)"
            R"("idp-facemap":{"facemap-endpoint":"https://face.example/v1","ocridscan-endpoint":"https://id.example",)"
            R"("facemap-device-key":"device-key","facemap-public-key":"public-key")" +
            (settings.empty() ? "" : ',' + settings) + "}}");
    }

    template <class Screen>
    std::shared_ptr<Screen> shown(const char* identifier, const std::shared_ptr<ThemeCustomization>& theme = nullptr) {
        auto screen = makeScreen<Screen>(identifier);
        screen->delegate = reports;
        screen->themeObj = theme;
        reports->restart();
        push(screen);
        return screen;
    }

    bool hasOverlay() const { return navigation->view()->viewWithTag(999) != nullptr; }

    std::shared_ptr<platform::AlertController> alert() const {
        return std::dynamic_pointer_cast<platform::AlertController>(window->visibleViewController());
    }

    std::shared_ptr<ScanVendor> vendor = std::make_shared<ScanVendor>();
    std::shared_ptr<ScriptedUrlSessions> sessions = std::make_shared<ScriptedUrlSessions>();
    std::shared_ptr<ScanReports> reports = std::make_shared<ScanReports>(clock);
    std::shared_ptr<Waiting> waiting = std::make_shared<Waiting>();
};

} // namespace kivo::test
