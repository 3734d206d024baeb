// A person, or the host, takes a screen away, at every moment at which something else is about to happen.
#include "Configuration/environment/SdkBundle.hpp"
#include "impl/SessionAPI.hpp"
#include "support/DocumentScreens.hpp"
#include "support/ScanScreens.hpp"
#include "support/ScriptedBackend.hpp"

#include <filesystem>
#include <functional>
#include <vector>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using enum AcquisitionObject;
using platform::ViewController;
using platform::readid::Failure;
using platform::readid::FailureReason;
using test::Scan;
using test::Texts;
using testing::ElementsAre;

constexpr auto docDone = DocAuthStatus::docAuthSuccess;
constexpr auto docOpen = DocAuthStatus::docAuthFailedOrInitialized;
constexpr auto faceDone = FaceAuthStatus::faceAuthSuccess;
constexpr auto faceOpen = FaceAuthStatus::faceAuthFailedOrInitialized;

/// A joined session with both vendors in the test's hands.
class Leaving : public test::HostScreenFixture {
protected:
    Leaving() {
        std::filesystem::create_directory(folder.path() / "Host.bundle");
        std::filesystem::copy(*sdkBundle()->pathForResource("ZORFramework", "storyboard"),
                              folder.path() / "Host.bundle");
        platform::Services services;
        services.readID = reader;
        services.faceTec = scanner;
        services.urlSessions = network;
        platform::install(services);
        api->setContext(host);
    }

    void show(AcquisitionObject object, const char* documentList = "true") {
        storeJoinAnswer(R"({"response-type":"data","tid":"T1","app-config":{"app-doclist":")" +
                        std::string{documentList} + R"("},"idp-biodata":{)" + test::biodata +
                        R"(},"idp-facemap":{"facemap-endpoint":"https://face","ocridscan-endpoint":"https://id",)"
                        R"("facemap-token":"token"}})");
        heard.clear();
        reader->handler = nullptr;
        scanner->id = nullptr;
        scanner->face = nullptr;
        api->acquire(object, nullptr, [this](const IdvOutcome& outcome) {
            heard.emplace_back(outcome ? IdvEventsHelper::eventName((*outcome)->responseType())
                                       : name(outcome.error()));
        });
        settle();
    }

    void touch(std::string_view outletName) const {
        const auto view = window->visibleViewController()->view()->find(outletName);
        ASSERT_NE(view, nullptr) << outletName;
        EXPECT_TRUE(view->touch()) << outletName;
    }

    void choose(int tag) const {
        const auto screen = window->visibleViewController()->view();
        screen->find("otherCardContainerView")->setHidden(false);
        EXPECT_TRUE(screen->viewWithTag(tag)->touch());
    }

    void findNoChip() const {
        Failure failure;
        failure.failureReason = FailureReason::noChip;
        reader->handler(std::unexpected{std::move(failure)});
    }

    void scanFace(int status) {
        touch("nextButton");
        settle();
        scanner->face->processSessionWhileFaceTecSDKWaits(std::make_shared<Scan>(status), waiting);
        answerScan(status);
    }

    void scanCard(int status) {
        advance(100ms);
        scanner->id->processIDScanWhileFaceTecSDKWaits(std::make_shared<Scan>(status), waiting);
        answerScan(status);
    }

    void answerScan(int status) {
        if (status == 0) {
            network->requests.back().answer(R"({"response-type":"pass"})");
        }
        settle();
        window->visibleViewController()->dismiss(false); // the vendor's own screen
        settle();
    }

    /// The library says that it is done some turns after its screen has gone.
    void doneLater() {
        mainLoop->asyncAfter(50ms, [face = scanner->face, id = scanner->id] {
            face ? face->onFaceTecSDKCompletelyDone() : id->onFaceTecSDKCompletelyDone();
        });
    }

    std::shared_ptr<test::DocumentVendor> reader = std::make_shared<test::DocumentVendor>();
    std::shared_ptr<test::ScanVendor> scanner = std::make_shared<test::ScanVendor>();
    std::shared_ptr<test::Waiting> waiting = std::make_shared<test::Waiting>();
    std::shared_ptr<test::ScriptedUrlSessions> network = std::make_shared<test::ScriptedUrlSessions>();
    test::ScriptedBackend backend;
    std::shared_ptr<SessionAPI> api = std::make_shared<SessionAPI>(InterfaceVersion::v180, backend);
    Texts heard;
};

TEST_F(Leaving, BringsTheOneOutcomeThatIsDueAndUndoesNothing) {
    const auto join = [this](const IdvOutcome& outcome) {
        backend.outcome = outcome;
        api->join("123456", nullptr, {});
    };
    const auto joined = std::make_shared<IdvResult>("T1", IdvEvents::JOIN_SESSION);
    const auto later = [this](std::function<void()> event) { mainLoop->asyncAfter(1s, std::move(event)); };

    struct Row {
        const char* what;
        AcquisitionObject object;
        std::function<void()> doing;
        Texts onBack;
        Texts onTheHostsDoing;
        const char* documentList = "true";
        DocAuthStatus docBefore = docOpen;
        FaceAuthStatus faceBefore = faceOpen;
    };

    const auto nothing = [] {};
    const Texts cancelled{"CANCELLED_BY_USER"};
    const Row rows[] = {
        {"no code", activationCode, nothing, cancelled, {}},
        {"a code joined this very moment", activationCode, [&] { join(joined); }, {}, {}},
        {"a code joined, and another one refused",
         activationCode,
         [&] {
             join(joined);
             join(std::unexpected{ResponseCode::STATUS_INVALID_ACTIVATION_CODE});
         },
         cancelled,
         {}},
        {"no document chosen", nfcScan, nothing, cancelled, {}},
        {"a document read before", nfcScan, nothing, cancelled, {}, "true", docDone},
        {"a reading about to begin by itself", nfcScan, nothing, cancelled, {}, "false"},
        {"a reading failed, and the screen about to close itself",
         nfcScan,
         [&] {
             advance(100ms);
             findNoChip();
         },
         {"NO_CHIP"},
         {"NO_CHIP"},
         "false"},
        {"a chip read, and the service still to answer",
         nfcScan,
         [&] {
             choose(1);
             reader->handler(test::success(platform::readid::NFCOnly{}));
             settle();
             later([this] { network->requests.back().answer("{}"); });
         },
         {"DOCUMENT_SCAN"},
         {"DOCUMENT_SCAN"}},
        {"another card chosen", nfcScan, [&] { choose(3); }, cancelled, {}},
        {"another card scanned",
         nfcScan,
         [&] {
             choose(3);
             advance(100ms);
             scanCard(0);
             scanner->done();
             advance(100ms);
         },
         {"OCR_SCAN"},
         {"OCR_SCAN"}},
        {"another card scanned in vain",
         nfcScan,
         [&] {
             choose(3);
             advance(100ms);
             scanCard(3);
             scanner->done();
             advance(100ms);
         },
         {"TIMEOUT"},
         {"TIMEOUT"}},
        {"no face scanned", facemapScan, nothing, cancelled, {}},
        {"a face scanned before", facemapScan, nothing, cancelled, {}, "true", docOpen, faceDone},
        {"a library that does not start",
         facemapScan,
         [&] { scanner->initialized(false); },
         {"FACETEC_INITIALIZATION_FAILED"},
         {"FACETEC_INITIALIZATION_FAILED"}},
        {"a library that takes long not to start",
         facemapScan,
         [&] { later([this] { scanner->initialized(false); }); },
         cancelled,
         {}},
        {"a face accepted",
         facemapScan,
         [&] {
             scanFace(0);
             doneLater();
         },
         {"FACE_SCAN"},
         {"FACE_SCAN"}},
        {"a face accepted and shown to be",
         facemapScan,
         [&] {
             scanFace(0);
             scanner->done();
         },
         {"FACE_SCAN"},
         {"FACE_SCAN"}},
        {"a face scanned in vain",
         facemapScan,
         [&] {
             scanFace(8);
             scanner->done();
             advance(150ms);
         },
         {"TIMEOUT"},
         {"TIMEOUT"}},
        {"a card scan about to begin", ocrScan, nothing, cancelled, {}},
        {"a document read before a card", ocrScan, nothing, cancelled, {}, "true", docDone},
        {"a card accepted",
         ocrScan,
         [&] {
             scanCard(0);
             doneLater();
         },
         {"OCR_SCAN"},
         {"OCR_SCAN"}},
        {"a card accepted and shown to be",
         ocrScan,
         [&] {
             scanCard(0);
             scanner->done();
         },
         {"OCR_SCAN"},
         {"OCR_SCAN"}},
        {"a card scanned in vain",
         ocrScan,
         [&] {
             scanCard(3);
             scanner->done();
         },
         {"TIMEOUT"},
         {"TIMEOUT"}},
    };
    for (const auto& row : rows) {
        for (const bool byBack : {true, false}) {
            SCOPED_TRACE(std::string{row.what} + (byBack ? ", left by Back" : ", taken away by the host"));
            auto& states = UIStateManager::shared();
            states.docAuthState = row.docBefore;
            states.faceAuthState = row.faceBefore;
            show(row.object, row.documentList);
            row.doing();
            byBack ? goBack() : pop();
            reader->handler = nullptr;
            scanner->id = nullptr;
            scanner->face = nullptr;
            for (int tenth = 0; tenth < 30; ++tenth) {
                advance(100ms);
            }
            const auto& expected = byBack ? row.onBack : row.onTheHostsDoing;
            EXPECT_EQ(heard, expected);
            EXPECT_THAT(navigation->viewControllers(), ElementsAre(host));
            const bool docSucceeds = expected == Texts{"DOCUMENT_SCAN"} || expected == Texts{"OCR_SCAN"};
            EXPECT_EQ(states.docAuthState, docSucceeds ? docDone : row.docBefore);
            EXPECT_EQ(states.faceAuthState, expected == Texts{"FACE_SCAN"} ? faceDone : row.faceBefore);
            EXPECT_TRUE(!byBack || !reader->handler) << "no reading begins any more";
            EXPECT_EQ(scanner->id, nullptr) << "nor a scan";
        }
    }
}

TEST_F(Leaving, BringsAnAcceptedScanWhenTheHostDismissesTheScreen) {
    const auto bare = std::make_shared<ViewController>();
    window->setRootViewController(bare);
    api->setContext(bare);
    for (const auto object : {facemapScan, ocrScan}) {
        for (const bool isDone : {false, true}) {
            show(object);
            const std::weak_ptr screen = bare->presentedViewController();
            object == facemapScan ? scanFace(0) : scanCard(0);
            bare->dismiss(false);
            settle();
            EXPECT_FALSE(screen.expired());
            if (isDone) {
                scanner->done();
                advance(100ms);
                settle();
            }
            scanner->face = nullptr;
            scanner->id = nullptr;
            EXPECT_EQ(heard, isDone ? Texts{object == facemapScan ? "FACE_SCAN" : "OCR_SCAN"} : Texts{});
            EXPECT_TRUE(screen.expired()) << "with the library's session";
        }
    }
}

TEST_F(Leaving, BringsTheIDScanOfADocumentScreenThatHasGone) {
    show(nfcScan);
    choose(3);
    advance(100ms);
    advance(100ms);
    pop();
    scanner->id->processIDScanWhileFaceTecSDKWaits(std::make_shared<Scan>(3), waiting);
    scanner->done();
    for (int tenth = 0; tenth < 3; ++tenth) {
        advance(100ms);
    }
    EXPECT_THAT(heard, ElementsAre("TIMEOUT"));
    EXPECT_EQ(window->visibleViewController(), host);
}

TEST_F(Leaving, TakesTheScreenItselfAwayAndNotWhatTheHostHasPutOverIt) {
    const auto accepted = [this] {
        scanCard(0);
        scanner->done();
    };
    show(ocrScan);
    accepted();
    const auto next = std::make_shared<ViewController>();
    push(next);
    advance(100ms);
    EXPECT_THAT(navigation->viewControllers(), ElementsAre(host, next));

    const auto bare = std::make_shared<ViewController>();
    window->setRootViewController(bare);
    api->setContext(bare);
    for (const auto object : {ocrScan, nfcScan}) {
        show(object, "false");
        if (object == ocrScan) {
            accepted();
        } else {
            advance(100ms);
            findNoChip();
        }
        const auto alert = std::make_shared<platform::AlertController>("", "Sorry");
        bare->present(alert, false);
        EXPECT_NE(bare->presentedViewController(), alert);
        advance(100ms);
        EXPECT_EQ(bare->presentedViewController(), alert);
        EXPECT_EQ(bare->view()->window(), window) << "and the screen below is back";
        EXPECT_EQ(window->subviews().back(), alert->view());
        alert->dismiss(false);
        settle();
        EXPECT_EQ(window->visibleViewController(), bare);
    }
}

} // namespace
} // namespace kivo
