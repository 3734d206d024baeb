#include "Configuration/settings/Settings.hpp"
#include "NetworkManager/Attempts.hpp"
#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"
#include "support/PropertyLists.hpp"
#include "support/ScanScreens.hpp"

#include <kivo/Deployment.hpp>

#include <gmock/gmock.h>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::Button;
using platform::Label;
using test::Scan;
using test::Texts;
using test::Waiting;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class FaceScanScreen : public test::ScanScreens {
protected:
    std::shared_ptr<LiveNessCheckVC> shown(const std::shared_ptr<ThemeCustomization>& theme = nullptr) {
        return ScanScreens::shown<LiveNessCheckVC>("LivenessCheckVCID", theme);
    }

    void pressNext(LiveNessCheckVC& screen) {
        outlet<Button>(screen, "nextButton")->tap();
        settle();
        reports->restart();
    }

    /// Has the library hand over a scan.
    void handOver(const std::shared_ptr<Scan>& scan = std::make_shared<Scan>()) {
        vendor->face->processSessionWhileFaceTecSDKWaits(scan, waiting);
        settle();
    }

    void finish() {
        vendor->done();
        for (int tick = 0; tick < 50; ++tick) {
            advance(10ms);
        }
    }

    static bool offersScan(LiveNessCheckVC& screen) {
        const auto next = outlet<Button>(screen, "nextButton");
        EXPECT_EQ(outlet<Label>(screen, "titleInfoLabel")->isHidden(), next->isHidden());
        EXPECT_EQ(outlet<Label>(screen, "processDescriptionLabel")->isHidden(), next->isHidden());
        return !next->isHidden() && next->isEnabled();
    }
};

TEST_F(FaceScanScreen, StartsTheLibraryInTheModeOfTheDeployment) {
    KivoSDK::setLogLevel(LogLevel::debug);
    testing::internal::CaptureStdout();
    for (const bool isProduction : {true, false}) {
        Deployment deployment;
        deployment.faceTecProduction = isProduction;
        deployment.faceTecProductionKey = "vendor-key";
        Deployment::install(deployment);
        vendor->calls.clear();
        shown(std::make_shared<ThemeCustomization>());
        EXPECT_THAT(vendor->calls, ElementsAre((isProduction ? "production vendor-key" : "development") +
                                                   std::string{" device-key public-key"},
                                               "look", "language Zoom"));
        vendor->initialized(true);
        pop();
    }
    const auto log = testing::internal::GetCapturedStdout();
    EXPECT_THAT(log, testing::AllOf(HasSubstr("initilization"), Not(HasSubstr("-key"))));
    removeStoredJoinAnswer();
    vendor->calls.clear();
    shown();
    EXPECT_EQ(vendor->calls.front(), "development  ");
}

class BundledDeployment : public test::HostScreenFixture {
protected:
    BundledDeployment()
        : HostScreenFixture{SdkBundle::ofTheTest} {}
};

TEST_F(BundledDeployment, NamesTheModeOfTheFaceScanLibraryAndItsKey) {
    folder.write(
        "Sdk.bundle/Info.plist",
        test::propertyList("<dict><key>CFBundleIdentifier</key><string>com.test.ZORFramework</string></dict>"));
    folder.write("Sdk.bundle/Deployment.plist",
                 test::propertyList("<dict><key>FaceTecProduction</key><true/>"
                                    "<key>FaceTecProductionKey</key><string>vendor-key</string></dict>"));
    EXPECT_TRUE(Deployment::current().faceTecProduction);
    EXPECT_EQ(Deployment::current().faceTecProductionKey, "vendor-key");
}

TEST_F(FaceScanScreen, ReportsAFailedStartAfterAFifthOfASecond) {
    const auto screen = shown();
    std::thread{[this] { vendor->initialized(false); }}.join();
    advance(199ms);
    EXPECT_THAT(reports->heard, IsEmpty());
    advance(1ms);
    EXPECT_THAT(reports->heard, ElementsAre("FACETEC_INITIALIZATION_FAILED 200 ms"));
    EXPECT_EQ(reports->thread, std::this_thread::get_id());
    EXPECT_TRUE(offersScan(*screen));
    pop();
    shown();
    vendor->initialized(true);
    advance(1s);
    EXPECT_THAT(reports->heard, IsEmpty());
}

TEST_F(FaceScanScreen, LeavesThePersonInTheIntroductionWhenTheLibraryHasNoScreen) {
    vendor->makesScreens = false;
    const auto screen = shown();
    outlet<Button>(*screen, "nextButton")->tap();
    EXPECT_THAT(reports->heard, ElementsAre("FACETEC_INITIALIZATION_FAILED 0 ms"));
    settle();
    advance(200ms);
    EXPECT_TRUE(offersScan(*screen));
    EXPECT_FALSE(hasOverlay());
}

TEST_F(FaceScanScreen, DoesNotScanWithoutATokenOrAnAttempt) {
    folder.write("Host.bundle/en.lproj/Localizable.strings",
                 R"("Retry_Limit_Title" = "Enough"; "Retry_Limit_Message" = "Ask for a new code.";)");
    joinWith("");
    auto screen = shown();
    outlet<Button>(*screen, "nextButton")->tap();
    settle();
    EXPECT_THAT(reports->heard, ElementsAre("INVALID_FACEMAP_TOKEN 0 ms"));
    EXPECT_EQ(alert(), nullptr);
    EXPECT_TRUE(hasOverlay());
    EXPECT_FALSE(offersScan(*screen));
    pop();
    advance(200ms);
    EXPECT_FALSE(hasOverlay()) << "the overlay goes with the screen";

    joinWith(R"("facemap-token":"token")");
    Attempts::shared().setShouldApplyRetryLimit(true);
    Attempts::shared().setRetryLimit(0);
    screen = shown();
    outlet<Button>(*screen, "nextButton")->tap();
    settle();
    EXPECT_THAT(reports->heard, ElementsAre("RETRY_LIMIT_REACHED 0 ms"));
    ASSERT_NE(alert(), nullptr);
    EXPECT_EQ(alert()->title() + ' ' + alert()->message(), "Enough Ask for a new code.");
    ASSERT_EQ(alert()->actions().size(), 1U);
    EXPECT_EQ(alert()->actions()[0].title, "OK");
    EXPECT_TRUE(hasOverlay());
    EXPECT_EQ(vendor->face, nullptr);
    pop();
    advance(200ms);
    EXPECT_FALSE(hasOverlay());
}

TEST_F(FaceScanScreen, ReportsWhyTheLibraryGaveUp) {
    const auto screen = shown();
    const std::map<int, const char*> rows{{1, "SESSION_UNSUCCESSFUL"},
                                          {2, "CANCELLED"},
                                          {4, "CAMERA_PERMISSION_ERROR"},
                                          {5, "CONTEXT_SWITCH"},
                                          {6, "LANDSCAPE_MODE_NOT_ALLOWED"},
                                          {7, "REVERSE_PORTRAIT_NOT_ALLOWED"},
                                          {8, "TIMEOUT"},
                                          {9, "FACE_SCAN_LOW_MEMORY"},
                                          {12, "ENCRYPTION_KEY_INVALID"},
                                          {13, "MISSING_GUIDANCE_IMAGES"},
                                          {14, "CAMERA_INITIALIZATION_ISSUE"},
                                          {15, "LOCKED_OUT"},
                                          {16, "UNKNOWN_INTERNAL_ERROR"},
                                          {17, "USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT"},
                                          {18, "STATUS_SESSION_EXPIRED"}};
    for (int status = -1; status <= 20; ++status) {
        SCOPED_TRACE(status);
        pressNext(*screen);
        EXPECT_TRUE(hasOverlay());
        EXPECT_FALSE(offersScan(*screen));
        if (status != 0) {
            waiting->heard.clear();
            handOver(std::make_shared<Scan>(status));
            EXPECT_THAT(waiting->heard, ElementsAre("cancel"));
            finish();
            const auto row = rows.find(status);
            EXPECT_THAT(reports->heard,
                        ElementsAre(std::string{row == rows.end() ? "UNKNOWN_ERROR" : row->second} + " 200 ms"));
        } else {
            finish();
            EXPECT_THAT(reports->heard, ElementsAre("FACESCAN_NO_SESSION_RESULT 100 ms")) << "not the former one's";
        }
        EXPECT_TRUE(offersScan(*screen));
        EXPECT_FALSE(hasOverlay());
    }
    EXPECT_THAT(sessions->requests, IsEmpty());
}

TEST_F(FaceScanScreen, DealsWithTheServersAnswer) {
    struct Row {
        platform::UrlOutcome answer;
        const char* told;
        Texts reported;
        bool libraryAgrees = true;
    };

    const auto says = [](std::string body, int status = 200) {
        return platform::UrlResponse{.status = status, .headers = {}, .body = std::move(body)};
    };
    const auto failure = [](platform::UrlErrorKind kind) {
        return std::unexpected{platform::UrlError{.kind = kind, .text = "no"}};
    };
    const Row rows[] = {
        {failure(platform::UrlErrorKind::timedOut), "cancel", {"UNKNOWN_ERROR 0 ms"}},
        {failure(platform::UrlErrorKind::pinMismatch), "cancel", {"UNSECURE_SERVER_PINNING_FAILED 0 ms"}},
        {platform::UrlResponse{.status = 204, .headers = {}, .body = {}}, "cancel", {"UNKNOWN_ERROR 0 ms"}},
        {says("<html>"), "cancel", {"UNKNOWN_ERROR 0 ms"}},
        {says(R"("pass")"), "cancel", {"UNKNOWN_ERROR 0 ms"}},
        {says("{}"), "cancel", {}},
        {says(R"({"response-type":"data"})"), "cancel", {}},
        {says(R"({"response-type":["pass"]})"), "cancel", {}},
        {says(R"({"response-type":"fail","response-code":"STATUS_BAD_FACEMAP"})", 400),
         "cancel",
         {"STATUS_BAD_FACEMAP 0 ms"}},
        {says(R"({"response-type":"fail","response-code":"NO_SUCH_CODE"})"), "cancel", {"UNKNOWN_ERROR 0 ms"}},
        {says(R"({"response-type":"pass","response-data":{"scanResultBlob":"blob"}})"),
         "proceed \"blob\"",
         {"FACE_SCAN 100 ms"}},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", {"FACE_SCAN 100 ms"}},
        {says(R"({"response-type":"pass","response-data":"blob"})"), R"(proceed "")", {"FACE_SCAN 100 ms"}},
        {says(R"({"response-type":"pass","response-data":{"scanResultBlob":1}})"),
         R"(proceed "")",
         {"FACE_SCAN 100 ms"}},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", {}, /*libraryAgrees=*/false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer ? row.answer->body.value_or("no body") : "no answer");
        UIStateManager::shared().faceAuthState = FaceAuthStatus::faceAuthFailedOrInitialized;
        const auto screen = shown();
        pressNext(*screen);
        waiting->heard.clear();
        waiting->agrees = row.libraryAgrees;
        handOver();
        sessions->requests.back().answer(row.answer);
        settle();
        EXPECT_THAT(waiting->heard, ElementsAre(row.told));
        EXPECT_FALSE(sessions->requests.back().isWanted());
        finish();
        EXPECT_EQ(reports->heard, row.reported);
        const bool isObject = row.answer && row.answer->body.value_or("").starts_with('{');
        EXPECT_EQ(screen->latestServerResult(), isObject ? *row.answer->body : "");
        const bool isSuccess = !row.reported.empty() && row.reported[0].starts_with("FACE_SCAN");
        EXPECT_EQ(offersScan(*screen), !isSuccess);
        EXPECT_FALSE(hasOverlay());
        pop();
        EXPECT_EQ(offersScan(*shown()), !isSuccess) << "until a new session is joined";
        pop();
    }
}

TEST_F(FaceScanScreen, PostsTheScan) {
    pressNext(*shown());
    handOver();
    const auto& request = sessions->requests.back().request;
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, "https://face.example/v1/enrollment-3d");
    EXPECT_THAT(request.headers, testing::UnorderedElementsAre(testing::Pair("Content-Type", "application/json"),
                                                               testing::Pair("X-Device-Key", "device-key"),
                                                               testing::Pair("User-Agent", "agent/session-1")));
    EXPECT_EQ(request.body, R"({"faceScan":"c2Nhbg==","auditTrailImage":"Zmlyc3Q=",)"
                            R"("lowQualityAuditTrailImage":"c2Vjb25k","externalDatabaseRefID":""})");
    EXPECT_FALSE(sessions->requests.back().isPinned());
    const auto& limits = sessions->requests.back().configuration;
    EXPECT_EQ(std::min({request.timeout, limits.requestTimeout, limits.resourceTimeout}), 5min);
    EXPECT_EQ(limits.idleTimeout, 1min);
    EXPECT_EQ(limits.responseLimit, std::size_t{16} << 20);

    Deployment::install({.joinPages = {}, .requiresPins = true});
    const auto odd = std::make_shared<Scan>();
    odd->scan.reset();
    odd->session.reset();
    odd->first = {"a\"b\\\n\x80"};
    handOver(odd);
    EXPECT_EQ(sessions->requests.back().request.body,
              R"({"auditTrailImage":"a\"b\\\n)"
              "\xEF\xBF\xBD"
              R"(","lowQualityAuditTrailImage":"c2Vjb25k","externalDatabaseRefID":""})");
    EXPECT_EQ(sessions->requests.back().request.headers.back().second, "agent/");
    EXPECT_TRUE(sessions->requests.back().isPinned()) << "as every other request";
}

TEST_F(FaceScanScreen, GivesUpOnAScanThatCannotBeSent) {
    const auto scan = std::make_shared<Scan>();
    scan->second.clear();
    pressNext(*shown());
    handOver(scan);
    joinWith(R"("facemap-token":"token","facemap-endpoint":"")");
    handOver();
    joinWith(R"("facemap-token":"token","facemap-endpoint":"https://scan")");
    sessions->isExhausted = true;
    handOver();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel", "cancel", "cancel"));
    EXPECT_THAT(reports->heard, ElementsAre("UNKNOWN_ERROR 0 ms", "UNKNOWN_ERROR 0 ms", "UNKNOWN_ERROR 0 ms"));
    EXPECT_THAT(sessions->requests, IsEmpty());
}

TEST_F(FaceScanScreen, TellsTheLibraryHowTheUploadGoes) {
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->faceScanUploadMessage = "Still sending";
    theme->faceScanSuccessMessageText = "Thank you";
    pressNext(*shown(theme));
    handOver();
    const auto& request = sessions->requests.back();
    request.sent(512, 2048);
    advance(5999ms);
    EXPECT_THAT(waiting->heard, ElementsAre("0.250000"));
    advance(1ms);
    EXPECT_THAT(waiting->heard, ElementsAre("0.250000", "message \"Still sending\""));
    request.answer(R"({"response-type":"pass"})");
    settle();
    EXPECT_EQ(vendor->successMessage, "Thank you");
    request.sent(2048, 2048);
    settle();
    EXPECT_EQ(waiting->heard.size(), 3U) << "nothing comes after the answer";

    handOver();
    advance(5999ms);
    sessions->requests.back().answer("{}");
    advance(1ms);
    EXPECT_EQ(waiting->heard.back(), "cancel") << "a message that came too late";
}

TEST_F(FaceScanScreen, CountsTheAttemptWhereAttemptsAreLimited) {
    Attempts::shared().setRetryLimit(2);
    pressNext(*shown());
    handOver();
    EXPECT_EQ(sessions->requests.size(), 1U);
    EXPECT_EQ(Attempts::shared().retryLimit(), 2);
    Attempts::shared().setShouldApplyRetryLimit(true);
    handOver();
    ASSERT_EQ(sessions->requests.size(), 3U);
    EXPECT_EQ(sessions->requests.back().request.url, "https://idp.example/update");
    EXPECT_EQ(Attempts::shared().retryLimit(), 1);
}

TEST_F(FaceScanScreen, DropsTheUploadWhenTheLibraryCancelsOrScansAgain) {
    const auto screen = shown();
    pressNext(*screen);
    handOver();
    const auto former = waiting;
    waiting = std::make_shared<Waiting>();
    handOver();
    EXPECT_FALSE(sessions->requests[0].isWanted());
    EXPECT_TRUE(sessions->requests[1].isWanted());
    // In the middle of being told how far it has come.
    waiting->onProgress = [this] {
        vendor->face->processSessionWhileFaceTecSDKWaits(std::make_shared<Scan>(2), waiting);
    };
    sessions->requests[1].sent(1, 2);
    settle();
    EXPECT_FALSE(sessions->requests[1].isWanted());
    for (const auto& request : sessions->requests) {
        request.answer(std::unexpected{platform::UrlError{.kind = platform::UrlErrorKind::cancelled, .text = "no"}});
    }
    advance(6s);
    EXPECT_THAT(former->heard, IsEmpty());
    EXPECT_THAT(waiting->heard, ElementsAre("0.500000", "cancel"));
    EXPECT_THAT(reports->heard, IsEmpty());
    reports->restart();
    finish();
    EXPECT_THAT(reports->heard, ElementsAre("CANCELLED 200 ms"));
}

TEST_F(FaceScanScreen, AnswersTheHostWhenTheLibraryDoesNotWaitForTheUpload) {
    pressNext(*shown());
    handOver();
    finish();
    EXPECT_FALSE(sessions->requests.back().isWanted());
    EXPECT_THAT(waiting->heard, IsEmpty());
    EXPECT_THAT(reports->heard, ElementsAre("UNKNOWN_ERROR 0 ms"));
}

TEST_F(FaceScanScreen, GoesInTheMiddleOfAScan) {
    auto screen = shown();
    pressNext(*screen);
    handOver();
    const std::weak_ptr weak = screen;
    screen.reset();
    navigation->popToViewController(host, false);
    settle();
    EXPECT_TRUE(weak.expired());
    sessions->requests.back().answer("{}");
    settle();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel")) << "the library still hears";
    finish();
    EXPECT_THAT(reports->heard, IsEmpty());
}

TEST_F(FaceScanScreen, WearsTheTheme) {
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->faceScanIntroTitle = "Look here";
    theme->faceScanIntroNextButtonTitle = "Go";
    theme->faceScanIntroNextButtonBackgroundColor = platform::Color::systemBlue();
    theme->primaryButtonBorderWidth = 3;
    fonts->installed = {"Karbon-Medium"};
    const auto screen = shown(theme);
    const auto next = outlet<Button>(*screen, "nextButton");
    EXPECT_EQ(outlet<Label>(*screen, "titleInfoLabel")->text(), "Look here");
    EXPECT_NE(outlet<Label>(*screen, "processDescriptionLabel")->text(), "") << "the storyboard's";
    EXPECT_EQ(next->title(), "Go");
    EXPECT_EQ(next->backgroundColor(), platform::Color::systemBlue());
    EXPECT_EQ(next->layer().borderWidth, 3);
    EXPECT_EQ(vendor->customization, theme->faceVerificationUICustomization);
    EXPECT_TRUE(outlet<Button>(*screen, "closeButton")->isHidden()) << "as the theme has it";
    const auto title = outlet<Label>(*screen, "titleInfoLabel")->shownFont();
    EXPECT_EQ(title.name, "Karbon-Medium");
    EXPECT_EQ(title.pointSize, 32);
}

TEST_F(FaceScanScreen, ClosesOnRequest) {
    auto screen = shown();
    outlet<Button>(*screen, "closeButton")->tap();
    EXPECT_THAT(reports->heard, ElementsAre("CANCELLED_BY_USER 0 ms"));
    EXPECT_EQ(navigation->topViewController(), host);

    screen = makeScreen<LiveNessCheckVC>("LivenessCheckVCID");
    screen->delegate = reports;
    reports->restart();
    host->present(screen, false);
    settle();
    outlet<Button>(*screen, "closeButton")->tap();
    screen.reset();
    EXPECT_THAT(reports->heard, IsEmpty()) << "not before it has gone";
    settle();
    EXPECT_THAT(reports->heard, ElementsAre("CANCELLED_BY_USER 0 ms"));

    screen = makeScreen<LiveNessCheckVC>("LivenessCheckVCID");
    screen->delegate = reports;
    reports->restart();
    window->setRootViewController(std::make_shared<platform::NavigationController>(screen));
    settle();
    outlet<Button>(*screen, "closeButton")->tap();
    vendor->initialized(false);
    advance(200ms);
    EXPECT_THAT(reports->heard, ElementsAre("CANCELLED_BY_USER 0 ms", "FACETEC_INITIALIZATION_FAILED 200 ms"))
        << "a screen alone in its stack stays";
}

class FaceScanScreenWithoutALibrary : public test::HostScreenFixture {};

TEST_F(FaceScanScreenWithoutALibrary, SaysSo) {
    const auto reports = std::make_shared<test::ScanReports>(clock);
    const auto screen = makeScreen<LiveNessCheckVC>("LivenessCheckVCID");
    screen->delegate = reports;
    push(screen);
    advance(199ms);
    EXPECT_THAT(reports->heard, IsEmpty());
    advance(1ms);
    EXPECT_THAT(reports->heard, ElementsAre("FACETEC_INITIALIZATION_FAILED 200 ms"));
}

} // namespace
} // namespace kivo
