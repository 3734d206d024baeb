#pragma once

#include "Configuration/session/StoredSession.hpp"
#include "NetworkManager/Attempts.hpp"
#include "services/acquisition/facemap/facetec/UIStateManager.hpp"
#include "support/HostScreenFixture.hpp"
#include "support/ScriptedUrlSessions.hpp"
#include "support/ScriptedVendors.hpp"

#include <kivo/simulator/Reachability.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace kivo::test {

/// What the host's join answer says, as members of its objects.
struct Joined {
    std::string documentList = "true";
    std::string biodata = R"("biodata-proxy":"https://proxy","biodata-access-key":"A","biodata-encrypt-key":"E",)"
                          R"("biodata-endpoint":"https://notice")";
    std::string facemap = R"("facemap-token":"token")";
};

/// A host with a joined session, a network that the test answers for, and no vendor's library.
class ScreensWithoutVendors : public HostScreenFixture {
protected:
    ScreensWithoutVendors() {
        platform::Services services;
        services.urlSessions = network;
        services.reachability = std::make_shared<simulator::Reachability>();
        platform::install(services);
        limitAttempts(false);
        join();
    }

    static void limitAttempts(bool isLimited) { Attempts::shared().setShouldApplyRetryLimit(isLimited); }

    static void leaveAttempts(int count) { Attempts::shared().setRetryLimit(count); }

    static std::int64_t attemptsLeft() { return Attempts::shared().retryLimit(); }

    /// Joins anew: nothing is acquired, five attempts are left, and no request has been sent.
    void join(const Joined& joined = {}) const {
        storeJoinAnswer(
            R"({"response-type":"data","tid":"T1","app-config":{"app-doclist":")" + joined.documentList +
            R"("},"idp-config":{"update-endpoint":"https://update"},"idp-biodata":{)" + joined.biodata +
            R"(},"idp-facemap":{"facemap-endpoint":"https://face.example/v1","ocridscan-endpoint":"https://id.example",)"
            R"("facemap-device-key":"device-key","facemap-public-key":"public-key")" +
            (joined.facemap.empty() ? "" : ',' + joined.facemap) + "}}");
        leaveAttempts(5);
        UIStateManager::shared().docAuthState = DocAuthStatus::docAuthFailedOrInitialized;
        UIStateManager::shared().faceAuthState = FaceAuthStatus::faceAuthFailedOrInitialized;
        network->requests.clear();
    }

    /// What the retry notices said, in order.
    Texts attempts() const {
        Texts texts;
        for (const auto& each : network->requests) {
            if (each.request.url == "https://update") {
                texts.push_back(each.request.body);
            }
        }
        return texts;
    }

    std::shared_ptr<ScriptedUrlSessions> network = std::make_shared<ScriptedUrlSessions>();
};

/// The same host with both vendors' libraries in the test's hands.
class VendorScreens : public ScreensWithoutVendors {
protected:
    VendorScreens() {
        platform::Services services;
        services.faceTec = scanner;
        services.readID = reader;
        platform::install(services);
    }

    /// The face scan screen with the library's session begun.
    std::shared_ptr<LiveNessCheckVC> faceScan(const Theme& theme = nullptr) {
        auto screen = pushed<LiveNessCheckVC>(theme);
        pressNext(*screen);
        return screen;
    }

    void pressNext(LiveNessCheckVC& screen) {
        tap(screen, "nextButton");
        settle();
        waiting->heard.clear();
        ears->restart();
    }

    /// The ID scan screen with the library's session begun, if nothing is in its way.
    std::shared_ptr<OCRScanInitializeVC> cardScan(const Theme& theme = nullptr) {
        auto screen = pushed<OCRScanInitializeVC>(theme);
        advance(100ms);
        waiting->heard.clear();
        return screen;
    }

    void handOverFace(const std::shared_ptr<Scan>& scan = std::make_shared<Scan>()) const {
        scanner->face->processSessionWhileFaceTecSDKWaits(scan, waiting);
        settle();
    }

    void handOverCard(const std::shared_ptr<Scan>& scan = std::make_shared<Scan>()) const {
        scanner->id->processIDScanWhileFaceTecSDKWaits(scan, waiting);
        settle();
    }

    /// The library says that it is done; what follows has half a second.
    void scannerIsDone() {
        ears->restart();
        scanner->done();
        advance(500ms);
    }

    std::shared_ptr<ScanVendor> scanner = std::make_shared<ScanVendor>();
    std::shared_ptr<Waiting> waiting = std::make_shared<Waiting>();
    std::shared_ptr<DocumentVendor> reader = std::make_shared<DocumentVendor>();
};

/// What a server says, in 200 unless told otherwise.
inline platform::UrlOutcome says(std::string body, int status = 200) {
    return platform::UrlResponse{.status = status, .headers = {}, .body = std::move(body)};
}

inline platform::UrlOutcome fails(platform::UrlErrorKind kind) {
    return std::unexpected{platform::UrlError{.kind = kind, .text = "no"}};
}

} // namespace kivo::test
