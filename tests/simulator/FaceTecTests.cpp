#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr auto done = -1;

/// Answers each result as told, for both kinds of scans, and notes the statuses that it got.
class Processor final : public platform::FaceTecFaceScanProcessorDelegate,
                        public platform::FaceTecIDScanProcessorDelegate {
public:
    void
    processSessionWhileFaceTecSDKWaits(std::shared_ptr<platform::FaceTecSessionResult> result,
                                       std::shared_ptr<platform::FaceTecFaceScanResultCallback> callback) override {
        heard.push_back(result->status());
        faceResult = result;
        faceCallbacks.push_back(callback);
        if (result->status() != 0) {
            callback->onFaceScanResultCancel();
        } else if (!blob.empty()) {
            isSuccess = callback->onFaceScanResultProceedToNextStep(blob);
        }
    }

    void processIDScanWhileFaceTecSDKWaits(std::shared_ptr<platform::FaceTecIDScanResult> result,
                                           std::shared_ptr<platform::FaceTecIDScanResultCallback> callback) override {
        heard.push_back(result->status());
        sides.push_back({result->frontImagesCompressedBase64().size(), result->backImagesCompressedBase64().size()});
        if (result->status() != 0) {
            callback->onIDScanResultCancel();
        } else {
            isSuccess = callback->onIDScanResultProceedToNextStep(blob);
        }
    }

    void onFaceTecSDKCompletelyDone() override {
        heard.push_back(done);
        screenWasGone = !start.lock()->presentedViewController();
    }

    std::weak_ptr<platform::ViewController> start;
    /// Empty: keeps the library waiting.
    std::string blob = "from the server";
    std::vector<int> heard;
    std::vector<std::pair<std::size_t, std::size_t>> sides;
    std::shared_ptr<platform::FaceTecSessionResult> faceResult;
    std::vector<std::shared_ptr<platform::FaceTecFaceScanResultCallback>> faceCallbacks;
    bool isSuccess = false;
    bool screenWasGone = false;
};

class SimulatedFaceTec : public test::ScreenFixture {
protected:
    SimulatedFaceTec() {
        window_->setRootViewController(start_);
        processor_->start = start_;
        vendor_.initializeInDevelopmentMode("device key", "encryption key", [](bool) {});
        settle();
    }

    template <class Delegate>
    void begin() {
        const auto screen = vendor_.createSessionVC(std::shared_ptr<Delegate>{processor_}, "token");
        ASSERT_TRUE(screen);
        start_->present(screen, true);
        settle();
    }

    void scanFace() { begin<platform::FaceTecFaceScanProcessorDelegate>(); }

    void scanCard() { begin<platform::FaceTecIDScanProcessorDelegate>(); }

    std::shared_ptr<platform::ViewController> start_ = std::make_shared<platform::ViewController>();
    std::shared_ptr<Processor> processor_ = std::make_shared<Processor>();
    FaceTec vendor_;
    Person person_{window_, loop_, clock_};
};

TEST_F(SimulatedFaceTec, FollowsTheScript) {
    using Sides = ScanScript::Sides;

    struct Case {
        ScanScript script;
        std::vector<int> heard;
        bool isSuccess = false;
    };

    const std::vector<Case> cases{
        {{}, {0, done}, true},
        {{.status = faceScanStatus::timeout}, {8, done}},
        {{.retries = 2}, {0, 0, 0, done}, true},
        {{.status = faceScanStatus::cancelled, .retries = 1}, {0, 2, done}},
        {{.takesResultBlob = false}, {0, done}},
        {{.givesResult = false}, {done}},
        {{.scanTime = 2s}, {0, done}, true},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &each - cases.data());
        processor_->heard.clear();
        processor_->isSuccess = false;
        vendor_.faceScan = each.script;
        scanFace();
        EXPECT_TRUE(person_.waitFor([&] { return vendor_.sessions().back().isDone; }, 3s));
        EXPECT_EQ(processor_->heard, each.heard);
        EXPECT_EQ(processor_->isSuccess, each.isSuccess);
        EXPECT_TRUE(processor_->screenWasGone);
    }
    const std::vector<std::pair<Sides, std::vector<std::pair<std::size_t, std::size_t>>>> cards{
        {Sides::front, {{1, 0}}},
        {Sides::frontAndBack, {{1, 1}}},
        {Sides::frontThenBack, {{1, 0}, {0, 1}}},
    };
    for (const auto& [sides, expected] : cards) {
        processor_->sides.clear();
        vendor_.idScan.sides = sides;
        scanCard();
        EXPECT_EQ(processor_->sides, expected);
        EXPECT_TRUE(processor_->isSuccess);
    }
    EXPECT_THAT(vendor_.violations(), IsEmpty());
}

TEST_F(SimulatedFaceTec, HandsOverWhatTheScriptSaysOfAScan) {
    vendor_.faceScan = {.sessionId = std::nullopt, .scanBytes = std::size_t{10} * 1024 * 1024, .images = 2};
    scanFace();
    EXPECT_EQ(processor_->faceResult->faceScanBase64()->size(), std::size_t{10} * 1024 * 1024);
    EXPECT_EQ(processor_->faceResult->auditTrailCompressedBase64().size(), 2U);
    EXPECT_FALSE(processor_->faceResult->sessionId());
    vendor_.faceScan = {.hasScan = false, .images = 0};
    scanFace();
    EXPECT_FALSE(processor_->faceResult->faceScanBase64());
    EXPECT_THAT(processor_->faceResult->lowQualityAuditTrailCompressedBase64(), IsEmpty());
    vendor_.faceScan = {.makesScreen = false};
    EXPECT_FALSE(
        vendor_.createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate>{processor_}, "token"));
}

TEST_F(SimulatedFaceTec, EndsASessionAtOnceAfterAFailedInitialisation) {
    std::vector<bool> outcomes;
    vendor_.initializationStatus = faceScanStatus::encryptionKeyInvalid;
    vendor_.initializationTime = 1s;
    vendor_.initializeInProductionMode("production key", "device key", "wrong key",
                                       [&](bool isGood) { outcomes.push_back(isGood); });
    settle();
    EXPECT_THAT(outcomes, IsEmpty());
    clock_->advance(1s);
    settle();
    EXPECT_THAT(outcomes, ElementsAre(false));
    EXPECT_TRUE(vendor_.initializations().back().isProduction);
    scanFace();
    EXPECT_THAT(processor_->heard, ElementsAre(faceScanStatus::encryptionKeyInvalid, done));
}

TEST_F(SimulatedFaceTec, LetsAPersonDecide) {
    struct Case {
        std::vector<const char*> taps;
        std::vector<int> face;
        std::vector<int> card;
    };

    const std::vector<Case> cases{
        {{"finishScanButton", "continueButton"}, {0, done}, {0, done}},
        {{"cancelScanButton"}, {2, done}, {2, done}},
        {{"timeOutButton"}, {8, done}, {3, done}},
        {{"refuseCameraButton"}, {4, done}, {5, done}},
        {{"switchAppButton"}, {5, done}, {4, done}},
    };
    vendor_.waitsForPerson = true;
    window_->setSize({320, 400});
    person_.setReadingSize(platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge);
    for (const auto& each : cases) {
        for (const bool isFace : {true, false}) {
            processor_->heard.clear();
            isFace ? scanFace() : scanCard();
            for (const auto* tap : each.taps) {
                const auto outcome = person_.tap(tap);
                EXPECT_TRUE(outcome) << outcome.error();
            }
            EXPECT_EQ(processor_->heard, isFace ? each.face : each.card) << each.taps.front();
        }
    }
    processor_->heard.clear();
    vendor_.faceScan.retries = 1;
    vendor_.setOverrideResultScreenSuccessMessage("Welcome");
    scanFace();
    EXPECT_TRUE(person_.tap("finishScanButton"));
    EXPECT_TRUE(person_.sees("once more"));
    EXPECT_TRUE(person_.tap("scanAgainButton"));
    EXPECT_TRUE(person_.tap("finishScanButton"));
    EXPECT_TRUE(person_.sees("Welcome"));
    EXPECT_TRUE(person_.tap("continueButton"));
    EXPECT_THAT(processor_->heard, ElementsAre(0, 0, done));
    EXPECT_THAT(vendor_.violations(), IsEmpty());
}

TEST_F(SimulatedFaceTec, EndsWhenItsScreenIsTakenAway) {
    processor_->blob.clear();
    vendor_.waitsForPerson = true;
    scanFace();
    start_->present(std::make_shared<platform::AlertController>("", "On top"), true);
    settle();
    EXPECT_THAT(processor_->heard, IsEmpty());
    start_->dismiss(true);
    settle();
    EXPECT_THAT(processor_->heard, ElementsAre(faceScanStatus::contextSwitch, done));
}

TEST_F(SimulatedFaceTec, NotesWhatAProcessorMustNotDo) {
    processor_->blob.clear();
    scanFace();
    const auto callback = processor_->faceCallbacks.back();
    callback->onFaceScanUploadProgress(1.5F);
    scanFace();
    callback->onFaceScanResultCancel();
    callback->onFaceScanResultCancel();
    callback->onFaceScanUploadMessageOverride({.text = "late"});
    settle();
    EXPECT_EQ(vendor_.sessions().front().cancels, 1);
    EXPECT_THAT(vendor_.violations(), ElementsAre(HasSubstr("1.5"), HasSubstr("another one"), HasSubstr("cancelled"),
                                                  HasSubstr("upload message")));
}

} // namespace
} // namespace kivo::simulator
