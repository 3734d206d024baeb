#include "support/VendorScreens.hpp"

#include <kivo/Deployment.hpp>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using test::Scan;
using test::Waiting;
using testing::ElementsAre;
using testing::IsEmpty;

using FaceScanScreen = test::VendorScreens;

TEST_F(FaceScanScreen, StartsTheLibraryInTheModeOfTheDeployment) {
    for (const bool isProduction : {true, false}) {
        Deployment deployment;
        deployment.faceTecProduction = isProduction;
        deployment.faceTecProductionKey = "vendor-key";
        Deployment::install(deployment);
        scanner->calls.clear();
        const auto theme = makeTheme();
        pushed<LiveNessCheckVC>(theme);
        EXPECT_THAT(scanner->calls, ElementsAre((isProduction ? "production vendor-key" : "development") +
                                                    std::string{" device-key public-key"},
                                                "look", "language Zoom"));
        EXPECT_EQ(scanner->customization, theme->faceVerificationUICustomization);
        EXPECT_TRUE(scanner->customization->guidanceCustomization.retryScreenSlideshowImages.empty())
            << "the host has no picture of its own";
        scanner->initialized(true);
        advance(1s);
        EXPECT_THAT(ears->heard, IsEmpty());
    }
    removeStoredJoinAnswer();
    scanner->calls.clear();
    pushed<LiveNessCheckVC>();
    EXPECT_EQ(scanner->calls.front(), "development  ");
}

TEST_F(FaceScanScreen, ShowsWhetherTheStepIsDone) {
    using enum FaceAuthStatus;
    for (const auto state : {faceAuthFailedOrInitialized, faceAuthSuccess}) {
        UIStateManager::shared().faceAuthState = state;
        const auto screen = pushed<LiveNessCheckVC>(makeTheme());
        const bool isDone = state == faceAuthSuccess;
        for (const auto& [name, isHidden] : {std::pair{"nextButton", isDone}, std::pair{"stepIllustration", isDone},
                                             std::pair{"stepDoneView", !isDone}}) {
            EXPECT_EQ(outlet(*screen, name)->isHidden(), isHidden) << name;
        }
    }
}

TEST_F(FaceScanScreen, TellsTheLibraryHowTheUploadGoes) {
    const auto theme = makeTheme();
    theme->faceScanUploadMessage = "Still sending";
    theme->faceScanSuccessMessageText = "Thank you";
    faceScan(theme);
    handOverFace();
    const auto& request = network->requests.back();
    request.sent(512, 2048);
    advance(5999ms);
    EXPECT_THAT(waiting->heard, ElementsAre("0.250000"));
    advance(1ms);
    EXPECT_THAT(waiting->heard, ElementsAre("0.250000", "message \"Still sending\""));
    request.answer(R"({"response-type":"pass"})");
    settle();
    EXPECT_EQ(scanner->successMessage, "Thank you");
    request.sent(2048, 2048);
    settle();
    EXPECT_EQ(waiting->heard.size(), 3U) << "nothing comes after the answer";

    handOverFace();
    advance(5999ms);
    network->requests.back().answer("{}");
    advance(1ms);
    EXPECT_EQ(waiting->heard.back(), "cancel") << "a message that came too late";
}

TEST_F(FaceScanScreen, DropsTheUploadWhenTheLibraryCancelsOrScansAgain) {
    faceScan();
    handOverFace();
    const auto former = waiting;
    waiting = std::make_shared<Waiting>();
    handOverFace();
    EXPECT_FALSE(network->requests[0].isWanted());
    EXPECT_TRUE(network->requests[1].isWanted());
    // In the middle of being told how far the upload has come.
    waiting->onProgress = [this] {
        scanner->face->processSessionWhileFaceTecSDKWaits(std::make_shared<Scan>(2), waiting);
    };
    network->requests[1].sent(1, 2);
    settle();
    EXPECT_FALSE(network->requests[1].isWanted());
    for (const auto& request : network->requests) {
        request.answer(test::fails(platform::UrlErrorKind::cancelled));
    }
    advance(6s);
    EXPECT_THAT(former->heard, IsEmpty());
    EXPECT_THAT(waiting->heard, ElementsAre("0.500000", "cancel"));
    EXPECT_THAT(ears->heard, IsEmpty());
    scannerIsDone();
    EXPECT_THAT(ears->heard, ElementsAre("CANCELLED after 200 ms"));
}

TEST_F(FaceScanScreen, GoesInTheMiddleOfAScan) {
    const std::weak_ptr weak = faceScan();
    handOverFace();
    navigation->popToViewController(host, false);
    settle();
    EXPECT_TRUE(weak.expired());
    network->requests.back().answer("{}");
    settle();
    EXPECT_THAT(waiting->heard, ElementsAre("cancel")) << "the library still hears";
    scannerIsDone();
    EXPECT_THAT(ears->heard, IsEmpty());
}

using IDScanScreen = test::VendorScreens;

TEST_F(IDScanScreen, ScansATenthOfASecondAfterItHasStartedTheLibrary) {
    const auto theme = makeTheme();
    pushed<OCRScanInitializeVC>(theme);
    EXPECT_THAT(scanner->calls, ElementsAre("development device-key public-key", "language Zoom", "look"));
    EXPECT_EQ(scanner->customization, theme->faceVerificationUICustomization);
    scanner->initialized(false);
    advance(99ms);
    EXPECT_EQ(scanner->id, nullptr);
    advance(1ms);
    EXPECT_EQ(scanner->calls.back(), "id token") << "whatever the library says to its start";
    EXPECT_THAT(ears->heard, IsEmpty());
}

TEST_F(IDScanScreen, StaysWhenTheLibraryBroughtNoResult) {
    const auto screen = cardScan();
    screen->dueUntilTold = screen;
    scannerIsDone();
    EXPECT_TRUE(isOnTop(screen));
    EXPECT_EQ(screen->dueUntilTold, nullptr);
    goBack();
    EXPECT_THAT(ears->heard, ElementsAre("OCR_SCAN_FAILED after 100 ms")) << "one answer";
}

} // namespace
} // namespace kivo
