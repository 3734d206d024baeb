// A person, or the host, takes a screen away, at every moment at which something else is about to happen.
#include "impl/SessionAPI.hpp"
#include "support/ScriptedBackend.hpp"
#include "support/VendorScreens.hpp"

#include <functional>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using enum AcquisitionObject;
using platform::ViewController;
using test::Scan;
using test::Texts;
using testing::ElementsAre;

constexpr auto docDone = DocAuthStatus::docAuthSuccess;
constexpr auto docOpen = DocAuthStatus::docAuthFailedOrInitialized;
constexpr auto faceDone = FaceAuthStatus::faceAuthSuccess;
constexpr auto faceOpen = FaceAuthStatus::faceAuthFailedOrInitialized;

/// A session that acquires with both vendors in the test's hands.
class Leaving : public test::VendorScreens {
protected:
    Leaving() {
        addLayout();
        api->setContext(host);
    }

    /// Drops the vendors' sessions of the former row, joins anew, and shows the screen for `object`.
    void show(AcquisitionObject object, const char* documentList = "true", DocAuthStatus doc = docOpen,
              FaceAuthStatus face = faceOpen) {
        forgetVendors();
        join({.documentList = documentList});
        UIStateManager::shared().docAuthState = doc;
        UIStateManager::shared().faceAuthState = face;
        ears->restart();
        api->acquire(object, nullptr, ears->completion());
        settle();
    }

    void forgetVendors() const {
        reader->handler = nullptr;
        scanner->id = nullptr;
        scanner->face = nullptr;
    }

    void choose(int tag) const {
        const auto screen = window->visibleViewController()->view();
        screen->find("otherCardContainerView")->setHidden(false);
        EXPECT_TRUE(screen->viewWithTag(tag)->touch());
    }

    void scanFace(int status) {
        EXPECT_TRUE(window->visibleViewController()->view()->find("nextButton")->touch());
        settle();
        handOverFace(std::make_shared<Scan>(status));
        answerScan(status);
    }

    void scanCard(int status) {
        advance(100ms);
        handOverCard(std::make_shared<Scan>(status));
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

    /// What was heard, without the delays.
    Texts heard() const {
        auto texts = ears->heard;
        for (auto& text : texts) {
            text = text.substr(0, text.find(' '));
        }
        return texts;
    }

    test::ScriptedBackend backend;
    std::shared_ptr<SessionAPI> api = std::make_shared<SessionAPI>(InterfaceVersion::v180, backend);
};

TEST_F(Leaving, BringsTheOneOutcomeThatIsDueAndUndoesNothing) {
    using Moment = std::function<void()>;
    const auto later = [this](Moment event) { mainLoop->asyncAfter(1s, std::move(event)); };
    const auto joins = [this](const IdvOutcome& outcome) {
        if (outcome) {
            backend.outcome = *outcome;
        } else {
            backend.outcome = std::unexpected{kivo::Failure{.code = outcome.error()}};
        }
        api->join("123456", nullptr, {});
    };
    const Moment nothing = [] {};
    const Moment codeJoins = [&] { joins(std::make_shared<IdvResult>("T1", IdvEvents::JOIN_SESSION)); };
    const Moment anotherCodeIsRefused = [&] {
        codeJoins();
        joins(std::unexpected{ResponseCode::STATUS_INVALID_ACTIVATION_CODE});
    };
    const Moment readingFails = [&] {
        advance(100ms);
        reader->fail(platform::readid::FailureReason::noChip);
    };
    const Moment chipIsRead = [&] {
        choose(1);
        reader->succeed(platform::readid::NFCOnly{});
        settle();
        later([this] { network->requests.back().answer("{}"); });
    };
    const Moment otherCardIsChosen = [&] { choose(3); };
    const auto otherCardIsScanned = [&](int status) {
        return [&, status] {
            choose(3);
            advance(100ms);
            scanCard(status);
            scanner->done();
            advance(100ms);
        };
    };
    const Moment libraryFails = [&] { scanner->initialized(false); };
    const Moment libraryFailsLater = [&] { later(libraryFails); };
    // The library says some turns after its screen has gone that it is done.
    const auto doneLater = [&] {
        mainLoop->asyncAfter(50ms, [face = scanner->face, id = scanner->id] {
            face ? face->onFaceTecSDKCompletelyDone() : id->onFaceTecSDKCompletelyDone();
        });
    };
    const Moment faceIsAccepted = [&] {
        scanFace(0);
        doneLater();
    };
    const auto faceIsScanned = [&](int status) {
        return [&, status] {
            scanFace(status);
            scanner->done();
        };
    };
    const Moment faceScanFails = [&] {
        faceIsScanned(8)();
        advance(150ms);
    };
    const Moment twoThingsFail = [&] {
        libraryFails();
        faceIsScanned(8)();
    };
    const Moment cardIsAccepted = [&] {
        scanCard(0);
        doneLater();
    };
    const auto cardIsScanned = [&](int status) {
        return [&, status] {
            scanCard(status);
            scanner->done();
        };
    };

    struct Row {
        const char* what;
        AcquisitionObject object;
        Moment moment;
        const char* onBack;
        const char* onTheHostsDoing;
        const char* documentList = "true";
        DocAuthStatus docBefore = docOpen;
        FaceAuthStatus faceBefore = faceOpen;
    };

    const auto* const cancelled = "CANCELLED_BY_USER";
    const auto* const noStart = "FACETEC_INITIALIZATION_FAILED";
    const Row rows[] = {
        {"no code", activationCode, nothing, cancelled, ""},
        {"a code joined this very moment", activationCode, codeJoins, "", ""},
        {"a code joined, and another one refused", activationCode, anotherCodeIsRefused, cancelled, ""},
        {"no document chosen", nfcScan, nothing, cancelled, ""},
        {"a document read before", nfcScan, nothing, cancelled, "", "true", docDone},
        {"a reading about to begin by itself", nfcScan, nothing, cancelled, "", "false"},
        {"a reading failed, the screen about to close", nfcScan, readingFails, "NO_CHIP", "NO_CHIP", "false"},
        {"a chip read, the service still to answer", nfcScan, chipIsRead, "DOCUMENT_SCAN", "DOCUMENT_SCAN"},
        {"another card chosen", nfcScan, otherCardIsChosen, cancelled, ""},
        {"another card scanned", nfcScan, otherCardIsScanned(0), "OCR_SCAN", "OCR_SCAN"},
        {"another card scanned in vain", nfcScan, otherCardIsScanned(3), "TIMEOUT", "TIMEOUT"},
        {"no face scanned", facemapScan, nothing, cancelled, ""},
        {"a face scanned before", facemapScan, nothing, cancelled, "", "true", docOpen, faceDone},
        {"a library that does not start", facemapScan, libraryFails, noStart, noStart},
        {"a library that takes long not to start", facemapScan, libraryFailsLater, cancelled, ""},
        {"a face accepted", facemapScan, faceIsAccepted, "FACE_SCAN", "FACE_SCAN"},
        {"a face accepted and shown to be", facemapScan, faceIsScanned(0), "FACE_SCAN", "FACE_SCAN"},
        {"a face scanned in vain", facemapScan, faceIsScanned(8), "TIMEOUT", "TIMEOUT"},
        {"a face scanned in vain some time ago", facemapScan, faceScanFails, "TIMEOUT", "TIMEOUT"},
        {"a face scanned in vain without a library", facemapScan, twoThingsFail, noStart,
         "FACETEC_INITIALIZATION_FAILED|TIMEOUT"},
        {"a card scan about to begin", ocrScan, nothing, cancelled, ""},
        {"a document read before a card", ocrScan, nothing, cancelled, "", "true", docDone},
        {"a card accepted", ocrScan, cardIsAccepted, "OCR_SCAN", "OCR_SCAN"},
        {"a card accepted and shown to be", ocrScan, cardIsScanned(0), "OCR_SCAN", "OCR_SCAN"},
        {"a card scanned in vain", ocrScan, cardIsScanned(3), "TIMEOUT", "TIMEOUT"},
    };
    for (const auto& row : rows) {
        for (const bool byBack : {true, false}) {
            SCOPED_TRACE(std::string{row.what} + (byBack ? ", left by Back" : ", taken away by the host"));
            auto& states = UIStateManager::shared();
            show(row.object, row.documentList, row.docBefore, row.faceBefore);
            row.moment();
            const auto kept = byBack ? window->visibleViewController() : nullptr;
            byBack ? goBack() : pop();
            forgetVendors();
            advance(2s);
            const std::string expected = byBack ? row.onBack : row.onTheHostsDoing;
            EXPECT_EQ(test::Keys::barred(heard()), expected);
            EXPECT_THAT(navigation->viewControllers(), ElementsAre(host));
            const bool docSucceeds = expected == "DOCUMENT_SCAN" || expected == "OCR_SCAN";
            EXPECT_EQ(states.docAuthState, docSucceeds ? docDone : row.docBefore);
            EXPECT_EQ(states.faceAuthState, expected == "FACE_SCAN" ? faceDone : row.faceBefore);
            EXPECT_TRUE(!byBack || !reader->handler) << "no reading begins any more";
            EXPECT_EQ(scanner->id, nullptr) << "nor a scan";
        }
    }
}

TEST_F(Leaving, BringsAnAcceptedScanWhenTheHostDismissesTheScreen) {
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
            }
            forgetVendors();
            EXPECT_EQ(heard(), isDone ? Texts{object == facemapScan ? "FACE_SCAN" : "OCR_SCAN"} : Texts{});
            EXPECT_TRUE(screen.expired()) << "with the library's session";
        }
    }
}

TEST_F(Leaving, BringsTheIDScanOfADocumentScreenThatHasGone) {
    show(nfcScan);
    choose(3);
    advance(200ms);
    pop();
    handOverCard(std::make_shared<Scan>(3));
    scanner->done();
    advance(300ms);
    EXPECT_THAT(heard(), ElementsAre("TIMEOUT"));
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

    window->setRootViewController(bare);
    api->setContext(bare);
    for (const auto object : {ocrScan, nfcScan}) {
        show(object, "false");
        if (object == ocrScan) {
            accepted();
        } else {
            advance(100ms);
            reader->fail(platform::readid::FailureReason::noChip);
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
