#include "Configuration/settings/Settings.hpp"
#include "NetworkManager/Attempts.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "support/ScanScreens.hpp"

#include <gmock/gmock.h>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using test::Scan;
using test::Texts;
using test::Waiting;
using testing::ElementsAre;
using testing::IsEmpty;

class IDScanScreen : public test::ScanScreens {
protected:
    /// Pushed, and the library's session begun if nothing is in its way.
    std::shared_ptr<OCRScanInitializeVC> begun(const std::shared_ptr<ThemeCustomization>& theme = nullptr) {
        auto screen = shown<OCRScanInitializeVC>("OCRScanInitializeVC", theme);
        advance(100ms);
        waiting->heard.clear();
        return screen;
    }

    void handOver(const std::shared_ptr<Scan>& scan = std::make_shared<Scan>()) {
        vendor->id->processIDScanWhileFaceTecSDKWaits(scan, waiting);
        settle();
    }

    void finish() {
        reports->restart();
        vendor->done();
        for (int tick = 0; tick < 50; ++tick) {
            advance(10ms);
        }
    }

    bool isGone() const { return navigation->topViewController() == host; }
};

TEST_F(IDScanScreen, ScansATenthOfASecondAfterItHasStartedTheLibrary) {
    const auto theme = std::make_shared<ThemeCustomization>();
    shown<OCRScanInitializeVC>("OCRScanInitializeVC", theme);
    EXPECT_THAT(vendor->calls, ElementsAre("development device-key public-key", "language Zoom", "look"));
    EXPECT_EQ(vendor->customization, theme->faceVerificationUICustomization);
    vendor->initialized(false);
    advance(99ms);
    EXPECT_EQ(vendor->id, nullptr);
    advance(1ms);
    EXPECT_EQ(vendor->calls.back(), "id token") << "whatever the library says to its start";
    EXPECT_THAT(reports->heard, IsEmpty());
}

TEST_F(IDScanScreen, ReportsWhatKeepsItFromScanning) {
    struct Row {
        const char* what;
        const char* settings;
        bool isLimited;
        bool vendorMakesScreens;
        Texts reported;
        bool closes;
    };

    const auto* const token = R"("facemap-token":"token")";
    const Row rows[] = {
        {"no token", "", false, true, {}, false},
        {"no attempt left", token, true, true, {"RETRY_LIMIT_REACHED 100 ms"}, false},
        {"no vendor's screen", token, false, false, {"OCR_SCAN_FAILED 100 ms"}, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        joinWith(row.settings);
        Attempts::shared().setShouldApplyRetryLimit(row.isLimited);
        Attempts::shared().setRetryLimit(0);
        vendor->makesScreens = row.vendorMakesScreens;
        begun();
        EXPECT_EQ(reports->heard, row.reported);
        EXPECT_EQ(isGone(), row.closes);
        EXPECT_EQ(alert() != nullptr, row.isLimited);
        navigation->dismiss(false);
        if (!row.closes) {
            goBack();
            EXPECT_EQ(reports->heard.size(), 1U) << "one answer";
        }
    }
}

TEST_F(IDScanScreen, ClosesAndThenReportsWhyTheLibraryGaveUp) {
    const std::map<int, const char*> rows{{2, "CANCELLED"},
                                          {3, "TIMEOUT"},
                                          {4, "CONTEXT_SWITCH"},
                                          {5, "CAMERA_PERMISSION_DENIED"},
                                          {6, "TIMEOUT"},
                                          {7, "LANDSCAPE_MODE_NOT_ALLOWED"},
                                          {8, "REVERSE_PORTRAIT_NOT_ALLOWED"},
                                          {9, "CANCELLED"},
                                          {11, "CAMERA_PERMISSION_DENIED"}};
    for (int status = -1; status <= 13; ++status) {
        SCOPED_TRACE(status);
        const std::weak_ptr screen = begun();
        handOver(std::make_shared<Scan>(status));
        EXPECT_EQ(waiting->heard, status == 0 ? Texts{} : Texts{"cancel"});
        reports->restart();
        vendor->done();
        advance(100ms);
        settle();
        EXPECT_TRUE(isGone());
        EXPECT_TRUE(screen.expired());
        EXPECT_THAT(reports->heard, IsEmpty());
        advance(100ms);
        const auto row = rows.find(status);
        EXPECT_THAT(reports->heard,
                    ElementsAre(std::string{row == rows.end() ? "OCR_SCAN_FAILED" : row->second} + " 200 ms"));
    }
}

TEST_F(IDScanScreen, StaysWhenTheLibraryBroughtNoResult) {
    const auto screen = begun();
    screen->dueUntilTold = screen;
    finish();
    EXPECT_EQ(navigation->topViewController(), screen);
    EXPECT_EQ(screen->dueUntilTold, nullptr);
    goBack();
    EXPECT_THAT(reports->heard, ElementsAre("OCR_SCAN_FAILED 100 ms"));
}

TEST_F(IDScanScreen, DealsWithTheServersAnswer) {
    struct Row {
        platform::UrlOutcome answer;
        const char* told;
        bool isSuccess;
        bool libraryAgrees = true;
    };

    const auto says = [](std::string body) {
        return platform::UrlResponse{.status = 200, .headers = {}, .body = std::move(body)};
    };
    const Row rows[] = {
        {std::unexpected{platform::UrlError{.kind = platform::UrlErrorKind::pinMismatch, .text = "no"}}, "cancel",
         false},
        {says(""), "cancel", false},
        {says("7"), "cancel", false},
        {says(R"({"response-type":"fail","response-code":"STATUS_BAD_BIODATA"})"), "cancel", false},
        {says(R"({"response-type":"pass","response-data":{"scanResultBlob":"blob"}})"), "proceed \"blob\"", true},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", true},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", false, /*libraryAgrees=*/false},
    };
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->faceScanSuccessMessageText = "Thank you";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.answer ? *row.answer->body : "no answer");
        begun(theme);
        waiting->agrees = row.libraryAgrees;
        vendor->successMessage = "none";
        handOver();
        sessions->requests.back().sent(1024, 2048);
        sessions->requests.back().answer(row.answer);
        advance(10s);
        EXPECT_THAT(waiting->heard, ElementsAre("0.500000", row.told)) << "no message on a slow upload";
        EXPECT_EQ(vendor->successMessage, row.told == std::string{"cancel"} ? "none" : "Thank you");
        EXPECT_THAT(reports->heard, IsEmpty());
        finish();
        EXPECT_THAT(reports->heard, ElementsAre(row.isSuccess ? "OCR_SCAN 100 ms" : "OCR_SCAN_FAILED 200 ms"));
        EXPECT_TRUE(isGone());
    }
}

TEST_F(IDScanScreen, PostsTheScan) {
    Attempts::shared().setShouldApplyRetryLimit(true);
    Attempts::shared().setRetryLimit(1);
    begun();
    handOver();
    ASSERT_EQ(sessions->requests.size(), 1U) << "and counts no attempt";
    EXPECT_EQ(Attempts::shared().retryLimit(), 1);
    const auto& request = sessions->requests.back().request;
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.url, "https://id.example/idscan-only");
    EXPECT_THAT(request.headers, testing::UnorderedElementsAre(testing::Pair("Content-Type", "application/json"),
                                                               testing::Pair("X-Device-Key", "device-key"),
                                                               testing::Pair("User-Agent", "agent/session-1"),
                                                               testing::Pair("X-User-Agent", "agent/session-1")));
    EXPECT_EQ(request.body, R"({"idScan":"c2Nhbg==","idScanFrontImage":"Zmlyc3Q=","idScanBackImage":"c2Vjb25k"})");

    const auto bare = std::make_shared<Scan>();
    bare->scan.reset();
    bare->second.clear();
    handOver(bare);
    EXPECT_EQ(sessions->requests.back().request.body, R"({"idScanFrontImage":"Zmlyc3Q="})");
    bare->first.clear();
    handOver(bare);
    EXPECT_EQ(sessions->requests.back().request.body, "{}");
    joinWith(R"("facemap-token":"token","ocridscan-endpoint":"")");
    handOver();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel"));
    EXPECT_EQ(sessions->requests.size(), 3U);
}

TEST_F(IDScanScreen, DismissesItselfWhereThereIsNoNavigationStack) {
    const auto bare = std::make_shared<platform::ViewController>();
    window->setRootViewController(bare);
    const auto screen = makeScreen<OCRScanInitializeVC>("OCRScanInitializeVC");
    screen->delegate = reports;
    bare->present(screen, false);
    settle();
    advance(100ms);
    handOver();
    sessions->requests.back().answer(R"({"response-type":"pass"})");
    settle();
    finish();
    EXPECT_THAT(reports->heard, ElementsAre("OCR_SCAN 100 ms"));
    EXPECT_EQ(window->visibleViewController(), bare);
}

class IDScanScreenWithoutALibrary : public test::HostScreenFixture {};

TEST_F(IDScanScreenWithoutALibrary, ReportsAndCloses) {
    storeJoinAnswer(R"({"idp-facemap":{"facemap-token":"token"}})");
    const auto reports = std::make_shared<test::ScanReports>(clock);
    const auto screen = makeScreen<OCRScanInitializeVC>("OCRScanInitializeVC");
    screen->delegate = reports;
    push(screen);
    advance(100ms);
    EXPECT_THAT(reports->heard, ElementsAre("OCR_SCAN_FAILED 100 ms"));
    EXPECT_EQ(navigation->topViewController(), host);
}

} // namespace
} // namespace kivo
