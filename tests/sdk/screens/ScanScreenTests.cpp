// How the face scan screen and the ID scan screen, which share a library and an upload, begin, send and end.
#include "support/VendorScreens.hpp"

#include <algorithm>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using test::fails;
using test::Scan;
using test::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

class ScanScreens : public test::VendorScreens {
protected:
    static bool offersScan(LiveNessCheckVC& screen) {
        const auto next = outlet<platform::Button>(screen, "nextButton");
        EXPECT_EQ(outlet(screen, "titleInfoLabel")->isHidden(), next->isHidden());
        EXPECT_EQ(outlet(screen, "processDescriptionLabel")->isHidden(), next->isHidden());
        return !next->isHidden() && next->isEnabled();
    }
};

TEST_F(ScanScreens, SayWhatKeepsThemFromScanning) {
    folder.write("Host.bundle/en.lproj/Localizable.strings",
                 R"("Retry_Limit_Title" = "Enough"; "Retry_Limit_Message" = "Ask for a new code.";)");

    const auto* const token = R"("facemap-token":"token")";

    const struct {
        const char* facemap;
        bool hasAttempt;
        bool vendorMakesScreens;
        const char* face;
        bool faceCanTryAgain;
        Texts card;
        bool cardCloses;
    } rows[] = {
        {"", true, true, "INVALID_FACEMAP_TOKEN", false, {}, false},
        {token, false, true, "RETRY_LIMIT_REACHED", false, {"RETRY_LIMIT_REACHED after 100 ms"}, false},
        {token, true, false, "FACETEC_INITIALIZATION_FAILED", true, {"OCR_SCAN_FAILED after 100 ms"}, true},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.face);
        const auto expectAlert = [&] {
            ASSERT_EQ(alert() != nullptr, !row.hasAttempt);
            if (alert()) {
                EXPECT_EQ(alert()->title() + ' ' + alert()->message(), "Enough Ask for a new code.");
                ASSERT_EQ(alert()->actions().size(), 1U);
                EXPECT_EQ(alert()->actions()[0].title, "OK");
                navigation->dismiss(false);
            }
        };
        join({.facemap = row.facemap});
        limitAttempts(true);
        leaveAttempts(row.hasAttempt ? 1 : 0);
        scanner->makesScreens = row.vendorMakesScreens;

        const auto screen = pushed<LiveNessCheckVC>();
        tap(*screen, "nextButton");
        advance(200ms);
        EXPECT_THAT(ears->heard, ElementsAre(row.face));
        EXPECT_EQ(offersScan(*screen), row.faceCanTryAgain);
        EXPECT_EQ(hasOverlay(), !row.faceCanTryAgain);
        expectAlert();
        pop();
        advance(200ms);
        EXPECT_FALSE(hasOverlay()) << "the overlay goes with the screen";

        cardScan();
        EXPECT_EQ(ears->heard, row.card);
        EXPECT_EQ(isOnTop(host), row.cardCloses);
        expectAlert();
        if (!row.cardCloses) {
            goBack();
            EXPECT_EQ(ears->heard.size(), 1U) << "one answer";
        }
        EXPECT_EQ(scanner->face || scanner->id, !row.vendorMakesScreens) << "only then was the library asked";
    }
    EXPECT_THAT(network->requests, IsEmpty());
}

TEST_F(ScanScreens, SayWhyTheLibraryGaveUp) {
    const struct {
        int status;
        const char* face;
        const char* card;
    } rows[] = {
        {-1, "UNKNOWN_ERROR", "OCR_SCAN_FAILED"},
        {1, "SESSION_UNSUCCESSFUL", "OCR_SCAN_FAILED"},
        {2, "CANCELLED", "CANCELLED"},
        {3, "UNKNOWN_ERROR", "TIMEOUT"},
        {4, "CAMERA_PERMISSION_ERROR", "CONTEXT_SWITCH"},
        {5, "CONTEXT_SWITCH", "CAMERA_PERMISSION_DENIED"},
        {6, "LANDSCAPE_MODE_NOT_ALLOWED", "TIMEOUT"},
        {7, "REVERSE_PORTRAIT_NOT_ALLOWED", "LANDSCAPE_MODE_NOT_ALLOWED"},
        {8, "TIMEOUT", "REVERSE_PORTRAIT_NOT_ALLOWED"},
        {9, "FACE_SCAN_LOW_MEMORY", "CANCELLED"},
        {10, "UNKNOWN_ERROR", "OCR_SCAN_FAILED"},
        {11, "UNKNOWN_ERROR", "CAMERA_PERMISSION_DENIED"},
        {12, "ENCRYPTION_KEY_INVALID", "OCR_SCAN_FAILED"},
        {13, "MISSING_GUIDANCE_IMAGES", "OCR_SCAN_FAILED"},
        {14, "CAMERA_INITIALIZATION_ISSUE", "OCR_SCAN_FAILED"},
        {15, "LOCKED_OUT", "OCR_SCAN_FAILED"},
        {16, "UNKNOWN_INTERNAL_ERROR", "OCR_SCAN_FAILED"},
        {17, "USER_CANCELLED_VIA_CLICKABLE_READY_SCREEN_SUBTEXT", "OCR_SCAN_FAILED"},
        {18, "STATUS_SESSION_EXPIRED", "OCR_SCAN_FAILED"},
        {19, "UNKNOWN_ERROR", "OCR_SCAN_FAILED"},
    };

    const auto faceScreen = pushed<LiveNessCheckVC>();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.status);
        pressNext(*faceScreen);
        EXPECT_TRUE(hasOverlay());
        EXPECT_FALSE(offersScan(*faceScreen));
        handOverFace(std::make_shared<Scan>(row.status));
        EXPECT_THAT(waiting->heard, ElementsAre("cancel"));
        scannerIsDone();
        EXPECT_THAT(ears->heard, ElementsAre(row.face + std::string{" after 200 ms"}));
        EXPECT_TRUE(offersScan(*faceScreen));
        EXPECT_FALSE(hasOverlay());

        const std::weak_ptr cardScreen = cardScan();
        handOverCard(std::make_shared<Scan>(row.status));
        EXPECT_THAT(waiting->heard, ElementsAre("cancel"));
        ears->restart();
        scanner->done();
        advance(100ms);
        EXPECT_TRUE(isOnTop(faceScreen));
        EXPECT_TRUE(cardScreen.expired());
        EXPECT_THAT(ears->heard, IsEmpty()) << "the screen closes before it reports";
        advance(100ms);
        EXPECT_THAT(ears->heard, ElementsAre(row.card + std::string{" after 200 ms"}));
    }
    pressNext(*faceScreen);
    scannerIsDone();
    EXPECT_THAT(ears->heard, ElementsAre("FACESCAN_NO_SESSION_RESULT after 100 ms")) << "not the former scan's reason";
    EXPECT_TRUE(offersScan(*faceScreen));
    EXPECT_THAT(network->requests, IsEmpty());
}

TEST_F(ScanScreens, DealWithTheServersAnswer) {
    const auto says = [](std::string body) { return test::says(std::move(body)); };
    const auto* const unreadable = "UNKNOWN_ERROR";
    const auto* const success = "FACE_SCAN after 100 ms";

    const struct {
        platform::UrlOutcome answer;
        const char* told;
        Texts face;
        bool libraryAgrees = true;
    } rows[] = {
        {fails(platform::UrlErrorKind::timedOut), "cancel", {unreadable}},
        {fails(platform::UrlErrorKind::pinMismatch), "cancel", {"UNSECURE_SERVER_PINNING_FAILED"}},
        {platform::UrlResponse{.status = 204, .headers = {}, .body = {}}, "cancel", {unreadable}},
        {says("<html>"), "cancel", {unreadable}},
        {says(R"("pass")"), "cancel", {unreadable}},
        {says("{}"), "cancel", {}},
        {says(R"({"response-type":"data"})"), "cancel", {}},
        {says(R"({"response-type":["pass"]})"), "cancel", {}},
        {test::says(R"({"response-type":"fail","response-code":"STATUS_BAD_FACEMAP"})", 400),
         "cancel",
         {"STATUS_BAD_FACEMAP"}},
        {says(R"({"response-type":"fail","response-code":"NO_SUCH_CODE"})"), "cancel", {"UNKNOWN_ERROR"}},
        {says(R"({"response-type":"pass","response-data":{"scanResultBlob":"blob"}})"), R"(proceed "blob")", {success}},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", {success}},
        {says(R"({"response-type":"pass","response-data":"blob"})"), R"(proceed "")", {success}},
        {says(R"({"response-type":"pass","response-data":{"scanResultBlob":1}})"), R"(proceed "")", {success}},
        {says(R"({"response-type":"pass"})"), R"(proceed "")", {}, /*libraryAgrees=*/false},
    };

    const auto theme = makeTheme();
    theme->faceScanSuccessMessageText = "Thank you";
    for (const auto& row : rows) {
        const auto body = row.answer ? row.answer->body.value_or("no body") : "no answer";
        SCOPED_TRACE(body);
        const bool isPass = row.told != std::string{"cancel"};
        const bool isSuccess = isPass && row.libraryAgrees;
        waiting->agrees = row.libraryAgrees;
        join();

        const auto screen = faceScan(theme);
        handOverFace();
        const auto& upload = network->requests.back();
        upload.answer(row.answer);
        settle();
        EXPECT_THAT(waiting->heard, ElementsAre(row.told));
        EXPECT_FALSE(upload.isWanted());
        EXPECT_EQ(ears->heard, isSuccess ? Texts{} : row.face) << "a refusal at once";
        scanner->done();
        advance(500ms);
        EXPECT_EQ(ears->heard, row.face);
        EXPECT_EQ(screen->latestServerResult(), body.starts_with('{') ? body : "");
        EXPECT_EQ(offersScan(*screen), !isSuccess);
        EXPECT_FALSE(hasOverlay());
        pop();
        EXPECT_EQ(offersScan(*pushed<LiveNessCheckVC>()), !isSuccess) << "until a new session is joined";
        pop();

        cardScan(theme);
        scanner->successMessage = "none";
        handOverCard();
        network->requests.back().sent(1024, 2048);
        network->requests.back().answer(row.answer);
        advance(10s);
        EXPECT_THAT(waiting->heard, ElementsAre("0.500000", row.told)) << "no message on a slow upload";
        EXPECT_EQ(scanner->successMessage, isPass ? "Thank you" : "none");
        EXPECT_THAT(ears->heard, IsEmpty());
        scannerIsDone();
        EXPECT_THAT(ears->heard, ElementsAre(isSuccess ? "OCR_SCAN after 100 ms" : "OCR_SCAN_FAILED after 200 ms"));
        EXPECT_TRUE(isOnTop(host));
    }
}

/// A request as it goes on the wire, its headers in order of their names.
std::string wire(platform::UrlRequest request) {
    auto text = request.method + ' ' + request.url + '\n';
    std::ranges::sort(request.headers);
    for (const auto& [name, value] : request.headers) {
        text += name + ": " + value + '\n';
    }
    return text + '\n' + request.body;
}

TEST_F(ScanScreens, PostTheScan) {
    faceScan();
    handOverFace();
    EXPECT_EQ(wire(network->requests.back().request),
              "POST https://face.example/v1/enrollment-3d\n"
              "Content-Type: application/json\nUser-Agent: agent/session-1\nX-Device-Key: device-key\n\n"
              R"({"faceScan":"c2Nhbg==","auditTrailImage":"Zmlyc3Q=","lowQualityAuditTrailImage":"c2Vjb25k",)"
              R"("externalDatabaseRefID":""})");
    EXPECT_FALSE(network->requests.back().isPinned());
    const auto& limits = network->requests.back().configuration;
    EXPECT_EQ(std::min({network->requests.back().request.timeout, limits.requestTimeout, limits.resourceTimeout}),
              5min);
    EXPECT_EQ(limits.idleTimeout, 1min);
    EXPECT_EQ(limits.responseLimit, std::size_t{16} << 20);

    Deployment::install({.joinPages = {}, .requiresPins = true});
    const auto odd = std::make_shared<Scan>();
    odd->scan.reset();
    odd->session.reset();
    odd->first = {"a\"b\\\n\x80"};
    handOverFace(odd);
    EXPECT_EQ(network->requests.back().request.body,
              R"({"auditTrailImage":"a\"b\\\n)"
              "\xEF\xBF\xBD"
              R"(","lowQualityAuditTrailImage":"c2Vjb25k","externalDatabaseRefID":""})");
    EXPECT_EQ(network->requests.back().request.headers.back().second, "agent/");
    EXPECT_TRUE(network->requests.back().isPinned()) << "as every other request";
    Deployment::install({});

    cardScan();
    handOverCard();
    EXPECT_EQ(wire(network->requests.back().request),
              "POST https://id.example/idscan-only\n"
              "Content-Type: application/json\nUser-Agent: agent/session-1\nX-Device-Key: device-key\n"
              "X-User-Agent: agent/session-1\n\n"
              R"({"idScan":"c2Nhbg==","idScanFrontImage":"Zmlyc3Q=","idScanBackImage":"c2Vjb25k"})");
    const auto poor = std::make_shared<Scan>();
    poor->scan.reset();
    poor->second.clear();
    handOverCard(poor);
    EXPECT_EQ(network->requests.back().request.body, R"({"idScanFrontImage":"Zmlyc3Q="})");
    poor->first.clear();
    handOverCard(poor);
    EXPECT_EQ(network->requests.back().request.body, "{}");
}

TEST_F(ScanScreens, GiveUpOnAScanThatCannotBeSent) {
    const auto withoutPicture = std::make_shared<Scan>();
    withoutPicture->second.clear();
    faceScan();
    handOverFace(withoutPicture);
    join({.facemap = R"("facemap-token":"token","facemap-endpoint":"")"});
    handOverFace();
    join();
    network->isExhausted = true;
    handOverFace();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel", "cancel", "cancel"));
    EXPECT_THAT(ears->heard, ElementsAre("UNKNOWN_ERROR", "UNKNOWN_ERROR", "UNKNOWN_ERROR"));

    network->isExhausted = false;
    cardScan();
    join({.facemap = R"("facemap-token":"token","ocridscan-endpoint":"")"});
    handOverCard();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel"));
    EXPECT_THAT(network->requests, IsEmpty());
}

TEST_F(ScanScreens, CountAFaceScanWhereAttemptsAreLimitedAndNoCardScan) {
    faceScan();
    handOverFace();
    EXPECT_THAT(attempts(), IsEmpty());
    EXPECT_EQ(attemptsLeft(), 5);
    limitAttempts(true);
    handOverFace();
    EXPECT_EQ(attempts().size(), 1U);
    EXPECT_EQ(attemptsLeft(), 4);
    cardScan();
    handOverCard();
    EXPECT_EQ(attempts().size(), 1U);
    EXPECT_EQ(attemptsLeft(), 4);
}

TEST_F(ScanScreens, AnswerTheHostWhenTheLibraryDoesNotWaitForTheUpload) {
    faceScan();
    handOverFace();
    scannerIsDone();
    EXPECT_FALSE(network->requests.back().isWanted());
    EXPECT_THAT(ears->heard, ElementsAre("UNKNOWN_ERROR"));
    cardScan();
    handOverCard();
    scannerIsDone();
    EXPECT_FALSE(network->requests.back().isWanted());
    EXPECT_THAT(ears->heard, ElementsAre("OCR_SCAN_FAILED after 200 ms"));
    EXPECT_THAT(waiting->heard, IsEmpty());
}

} // namespace
} // namespace kivo
