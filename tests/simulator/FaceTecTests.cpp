#include "Configuration/session/StoredSession.hpp"
#include "support/AcquisitionRoad.hpp"

#include <kivo/platform/ui/AlertController.hpp>

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using enum AcquisitionObject;
using test::AcquisitionRoad;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Texts = std::vector<std::string>;

/// Scans of faces and cards, on the SDK's own screens.
class SimulatedFaceTec : public AcquisitionRoad {
protected:
    ~SimulatedFaceTec() override { EXPECT_THAT(scanner->violations(), IsEmpty()); }

    ScanRecord record() const { return scanner->sessions().back(); }
};

TEST_F(SimulatedFaceTec, FollowsTheScript) {
    struct Row {
        const char* what;
        ScanScript script;
        std::vector<int> results;
        const char* heard;
    };

    const std::vector<Row> rows{
        {"one good scan", {}, {0}, "FACE_SCAN"},
        {"a scan that takes time", {.scanTime = 2s}, {0}, "FACE_SCAN"},
        {"a time-out", {.status = faceScanStatus::timeout}, {8}, "TIMEOUT"},
        {"content with the third scan", {.retries = 2}, {0, 0, 0}, "FACE_SCAN"},
        {"low memory in the second",
         {.status = faceScanStatus::lowMemory, .retries = 1},
         {0, 9},
         "FACE_SCAN_LOW_MEMORY"},
        {"a blob not taken for good", {.takesResultBlob = false}, {0}, ""},
        {"no result at all", {.givesResult = false}, {}, "FACESCAN_NO_SESSION_RESULT"},
        {"a session without a name", {.sessionId = std::nullopt}, {0}, "FACE_SCAN"},
        {"neither scan nor pictures", {.hasScan = false, .images = 0}, {0}, "UNKNOWN_ERROR"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        scanner->faceScan = row.script;
        scanFace();
        EXPECT_TRUE(becomes([&] { return record().isDone; }));
        pass();
        EXPECT_EQ(record().results, row.results);
        EXPECT_EQ(heard, row.heard);
    }
    scanner->faceScan = {.makesScreen = false};
    scanFace();
    EXPECT_EQ(answer(), "FACETEC_INITIALIZATION_FAILED");
}

TEST_F(SimulatedFaceTec, ShowsTheSidesOfACardAsTheScriptSays) {
    using enum ScanScript::Sides;
    Texts sent;
    for (const auto sides : {front, frontAndBack, frontThenBack}) {
        const auto before = requestsTo(Endpoint::idScan).size();
        scanner->idScan.sides = sides;
        acquire(ocrScan);
        EXPECT_EQ(answer(), "OCR_SCAN");
        sent.emplace_back();
        const auto requests = requestsTo(Endpoint::idScan);
        for (auto at = before; at < requests.size(); ++at) {
            sent.back() += requests[at].body.contains("idScanFrontImage") ? "+front" : "+";
            sent.back() += requests[at].body.contains("idScanBackImage") ? "&back" : "";
        }
    }
    EXPECT_THAT(sent, ElementsAre("+front", "+front&back", "+front+&back"));
}

TEST_F(SimulatedFaceTec, LetsAPersonDecide) {
    const struct {
        std::vector<const char*> taps;
        const char* face;
        const char* card;
    } rows[] = {
        {{"finishScanButton", "continueButton"}, "FACE_SCAN", "OCR_SCAN"},
        // The session API keeps from the host that a person only went back to the introduction.
        {{"cancelScanButton"}, "", "CANCELLED"},
        {{"timeOutButton"}, "TIMEOUT", "TIMEOUT"},
        {{"refuseCameraButton"}, "CAMERA_PERMISSION_ERROR", "CAMERA_PERMISSION_DENIED"},
        {{"switchAppButton"}, "CONTEXT_SWITCH", "CONTEXT_SWITCH"},
    };

    scanner->waitsForPerson = true;
    window->setSize({320, 400});
    person.setReadingSize(platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge);
    for (const auto& row : rows) {
        for (const bool isFace : {true, false}) {
            isFace ? scanFace() : acquire(ocrScan);
            for (const auto* button : row.taps) {
                tap(button);
            }
            const std::string expected = isFace ? row.face : row.card;
            EXPECT_TRUE(becomes([&] { return expected.empty() ? person.sees("Start the scan") : !heard.empty(); }));
            EXPECT_EQ(heard, expected) << row.taps.front();
        }
    }
    scanner->faceScan.retries = 1;
    scanFace();
    tap("refuseCameraButton");
    EXPECT_EQ(answer(), "CAMERA_PERMISSION_ERROR");
    for (const auto* button : {"nextButton", "finishScanButton", "scanAgainButton", "finishScanButton"}) {
        tap(button);
    }
    EXPECT_TRUE(becomes([this] { return person.sees("Welcome to Utopia Bank"); }));
    tap("continueButton");
    EXPECT_EQ(answer(), "FACE_SCAN");
}

TEST_F(SimulatedFaceTec, EndsWhenItsScreenIsTakenAway) {
    scanner->waitsForPerson = true;
    scanFace();
    EXPECT_TRUE(becomes([this] { return record().isShown; }));
    window->visibleViewController()->present(std::make_shared<platform::AlertController>("", "On top"), true);
    pass();
    EXPECT_EQ(heard, "");
    navigation->dismiss(true);
    EXPECT_EQ(answer(), "CONTEXT_SWITCH");
}

TEST_F(SimulatedFaceTec, GoesOnFromARefusedScanAndHearsHowASlowUploadGoes) {
    scanner->faceScan.scanBytes = std::size_t{10} * 1024 * 1024;
    service.inject(Endpoint::facemap, Fault::anotherScan(), Calls::only(1));
    scanFace();
    EXPECT_EQ(answer(), "FACE_SCAN");
    EXPECT_EQ(scanner->successMessage(), "Welcome to Utopia Bank");
    EXPECT_THAT(record().blobsTaken, ElementsAre(false, true));
    EXPECT_EQ(requestsTo(Endpoint::facemap).size(), 2U);

    service.inject(Endpoint::facemap, Fault::slowReader(scanner->faceScan.scanBytes / 2));
    scanFace();
    EXPECT_EQ(answer(), "FACE_SCAN");
    const auto progress = record().uploadProgress;
    EXPECT_GE(progress.size(), 2U);
    EXPECT_TRUE(std::ranges::is_sorted(progress));
    EXPECT_GT(progress.front(), 0);
    EXPECT_LT(progress.front(), 1);
    EXPECT_EQ(progress.back(), 1);
    EXPECT_THAT(service.violations(), IsEmpty());
}

/// Keeps the library waiting.
struct IdleProcessor final : platform::FaceTecFaceScanProcessorDelegate {
    std::shared_ptr<platform::FaceTecFaceScanResultCallback> callback{};

    void processSessionWhileFaceTecSDKWaits(std::shared_ptr<platform::FaceTecSessionResult> /*result*/,
                                            std::shared_ptr<platform::FaceTecFaceScanResultCallback> given) override {
        callback = std::move(given);
    }

    void onFaceTecSDKCompletelyDone() override {}
};

TEST_F(AcquisitionRoad, ACarefulLibraryNotesWhatAProcessorMustNotDo) {
    scanner->initializeInDevelopmentMode("device key", "encryption key", [](bool) {});
    const auto begin = [this] {
        auto processor = std::make_shared<IdleProcessor>();
        start->present(scanner->createSessionVC(processor, "token"), true);
        mainLoop->drain();
        return processor;
    };
    const auto processor = begin();
    processor->callback->onFaceScanUploadProgress(1.5F);
    begin();
    processor->callback->onFaceScanResultCancel();
    processor->callback->onFaceScanResultCancel();
    processor->callback->onFaceScanUploadMessageOverride({.text = "late"});
    mainLoop->drain();
    EXPECT_EQ(scanner->sessions().front().cancels, 1);
    EXPECT_THAT(scanner->violations(), ElementsAre(HasSubstr("1.5"), HasSubstr("another one"), HasSubstr("cancelled"),
                                                   HasSubstr("upload message")));
}

TEST_F(AcquisitionRoad, TellsNoSecretAtTheDefaultLevel) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    KivoSDK::load("recognisable-key", "18");
    acquire(nfcScan);
    const auto joined = storedSession();
    ASSERT_TRUE(joined);
    tap("idCardOptionContainerView");
    EXPECT_EQ(answer(), "DOCUMENT_SCAN");
    scanFace();
    EXPECT_EQ(answer(), "FACE_SCAN");
    service.inject(Endpoint::idScan, Fault::answer(R"({"recognisable":"answer"})"));
    acquire(ocrScan);
    EXPECT_EQ(answer(), "OCR_SCAN_FAILED");
    service.inject(Endpoint::update, Fault::answer(R"({"response-type":"fail","response-message":"recognisable"})"));
    const Call calls[] = {
        [&](auto done) { session->upload(selfieImage, "recognisable-data", done); },
        [&](auto done) { session->update("inform", "recognisable-message", done); },
        [&](auto done) { session->commit(done); },
        [&](auto done) { session->join("recognisable-code", config(), done); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(answerTo(call).times, 1);
    }
    session->reset();
    const auto printed = testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr();

    Texts secrets{"recognisable", "123456", "simulated-", "ERIKSSON", "https://"};
    for (const auto* settings : {&joined->idpConfig, &joined->idpBiodata, &joined->idpFaceMap}) {
        for (const auto& [key, value] : *settings) {
            secrets.push_back(value.size() > 4 ? value : "https://");
        }
    }
    std::ifstream certificate{service.trustedCertificates()};
    std::getline(certificate, secrets.emplace_back());
    std::getline(certificate, secrets.emplace_back());
    EXPECT_THAT(printed, HasSubstr("KivoBE_180(configuration: [target-env: TEST"));
    EXPECT_THAT(printed, HasSubstr("FaceScan success"));
    EXPECT_THAT(printed, Not(testing::ContainsRegex("[^A-Za-z0-9]" + joined->tId + "[^A-Za-z0-9]")));
    for (const auto& secret : secrets) {
        EXPECT_THAT(printed, Not(HasSubstr(secret)));
    }
}

} // namespace
} // namespace kivo::simulator
