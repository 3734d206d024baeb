#include "DesktopFixture.hpp"
#include "app/Host.hpp"
#include "app/SteeringPanel.hpp"

#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <algorithm>

namespace kivo::test {
namespace {

/// A person at a real window on the road behind the code: a joined session, and vendors whose screens wait for the
/// mouse.
class DesktopRoad : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        if (IsSkipped()) {
            return;
        }
        installServices({}, service->trustedCertificates());
        services.fonts = device::fonts();
        services.faceTec = faceTec;
        services.readID = std::make_shared<simulator::ReadID>(simulator::Reading::byPerson());
        platform::install(services);
        const auto page = service->joinPage();
        Deployment::install({.joinPages = {page, page, page, page}});
        faceTec->waitsForPerson = true;
        session->join("123456", config(), answer());
        ASSERT_TRUE(await([&] { return heard == "JOIN_SESSION"; })) << heard;
    }

    /// Answers come on the transport's thread or on the main queue, and are noted on the latter.
    IdvCompletion answer() {
        return [this, loop = mainLoop](const IdvOutcome& outcome) {
            loop->async([this, outcome] {
                heard = outcome ? IdvEventsHelper::eventName((*outcome)->responseType()) : name(outcome.error());
            });
        };
    }

    void acquire(AcquisitionObject object) {
        heard.clear();
        session->acquire(object, nullptr, answer());
    }

    std::shared_ptr<simulator::IdentityService> service = std::make_shared<simulator::IdentityService>();
    std::shared_ptr<simulator::FaceTec> faceTec = std::make_shared<simulator::FaceTec>();
    std::string heard;
};

TEST_F(DesktopRoad, ADocumentAndAFaceAreScannedWithTheMouse) {
    acquire(AcquisitionObject::nfcScan);
    click("passportOptionContainerView");
    click("readPageAndChip");
    EXPECT_TRUE(await([&] { return heard == "DOCUMENT_SCAN"; })) << heard;

    navigation->popToViewController(host, /*animated=*/false);
    acquire(AcquisitionObject::facemapScan);
    click("nextButton");
    click("refuseCameraButton");
    EXPECT_TRUE(await([&] { return heard == "CAMERA_PERMISSION_ERROR"; })) << heard;
    click("nextButton");
    click("finishScanButton");
    click("continueButton");
    EXPECT_TRUE(await([&] { return heard == "FACE_SCAN"; })) << heard;
    EXPECT_TRUE(service->violations().empty());
}

TEST_F(DesktopRoad, IsWalkedWithTheKeyboardAloneInBothDirections) {
    for (const auto* language : {"en", "ar"}) {
        speak(language);
        EXPECT_EQ(window->layoutDirection() == platform::LayoutDirection::rightToLeft, language == std::string{"ar"});
        phone.setFocus();
        const auto app = std::make_shared<device::app::Host>(window, "18");
        app->start();
        const auto hears = [&](const char* outcome) {
            return await([&] {
                const auto label = window->find("outcome");
                return isThere("enterCode") && label && label->shownText() == outcome;
            });
        };
        pressWith("Return", "enterCode");
        ASSERT_TRUE(await([&] { return isThere("textFieldDigitOne"); }));
        pressWith("space", "scanQRCodeButton");
        pressWith("space", "scanManuallyButton");
        ASSERT_TRUE(await([&] { return isThere("textFieldDigitOne"); }));
        xdotool({"type", "--delay", "50", "12"});
        xdotool({"key", "Left", "BackSpace"});
        xdotool({"type", "--delay", "50", "23456"});
        ASSERT_TRUE(hears("You have joined the session.")) << language;
        pressWith("Return", "readDocument");
        ASSERT_TRUE(await([&] { return isThere("passportOptionContainerView"); }));
        xdotool({"key", "Escape"});
        pressWith("Return", "readDocument");
        ASSERT_TRUE(await([&] { return isThere("passportOptionContainerView"); }));
        const auto passport = window->viewWithTag(1);
        passport->setIdentifier("passport");
        pressWith("space", "passport");
        pressWith("Return", "readPageAndChip");
        ASSERT_TRUE(hears("The document was read.")) << language;
        pressWith("Return", "scanFace");
        pressWith("space", "nextButton");
        pressWith("Return", "finishScanButton");
        pressWith("Return", "continueButton");
        ASSERT_TRUE(hears("The face was scanned.")) << language;
    }
}

TEST_F(DesktopRoad, TheHostTellsAPersonHowEachStepEnds) {
    const auto app = std::make_shared<device::app::Host>(window, "18");
    app->start();
    const auto outcome = [&] { return window->find("outcome")->shownText(); };
    const auto isHome = [&] { return isThere("enterCode"); };
    service->inject(simulator::Endpoint::join, simulator::Fault::delay(std::chrono::seconds{1}));
    click("enterCode");
    ASSERT_TRUE(await([&] { return isThere("textFieldDigitOne"); }));
    xdotool({"type", "--delay", "50", "000000"});
    EXPECT_TRUE(await([&] { return window->find("progress") != nullptr; }));
    ASSERT_TRUE(await([&] { return window->find("alertMessage") != nullptr; })) << "a failure is told over the screen";
    EXPECT_EQ(window->find("alertMessage")->shownText(), message(ResponseCode::STATUS_INVALID_ACTIVATION_CODE));
    xdotool({"key", "Return"});
    ASSERT_TRUE(await([&] { return isThere("textFieldDigitOne"); }));
    xdotool({"type", "--delay", "50", "123456"});
    EXPECT_TRUE(await(isHome));
    EXPECT_EQ(outcome(), "You have joined the session.");

    click("readDocument");
    click("passportOptionContainerView");
    click("readPageAndChip");
    EXPECT_TRUE(await(isHome)) << "the screen is taken away after its success";
    EXPECT_EQ(outcome(), "The document was read.");
    click("scanFace");
    click("backButton");
    EXPECT_TRUE(await(isHome));
    EXPECT_EQ(window->find("alertMessage"), nullptr) << "going back is no failure";
    EXPECT_EQ(outcome(), "The document was read.");
}

TEST_F(DesktopRoad, ThePanelShowsWhatIsStillToCome) {
    const auto camera = std::make_shared<simulator::Camera>();
    const device::app::SteeringPanel panel{{.window = window,
                                            .service = service,
                                            .camera = camera,
                                            .readID = std::make_shared<simulator::ReadID>(),
                                            .faceTec = faceTec,
                                            .setTheme = [](const auto&) {}}};
    const auto press = [&](const QString& text) {
        for (auto* const button : panel.findChildren<QPushButton*>()) {
            if (button->text() == text) {
                button->click();
            }
        }
    };
    const auto shows = [&](const QString& text) {
        return await([&] {
            const auto labels = panel.findChildren<QLabel*>();
            return std::ranges::any_of(labels, [&](const auto* label) { return label->text() == text; });
        });
    };
    for (auto* const chooser : panel.findChildren<QComboBox*>()) {
        if (chooser->accessibleName() == "Fault") {
            chooser->setCurrentIndex(chooser->findText("Presents a self-signed certificate"));
        }
    }
    press("Misbehave");
    EXPECT_TRUE(shows("everywhere: self-signed, once"));
    for (const auto* expected : {"INVALID_JOIN_SESSION", "JOIN_SESSION"}) {
        heard.clear();
        session->join("123456", config(), answer());
        EXPECT_TRUE(await([&] { return heard == expected; })) << heard << ", expected " << expected;
        EXPECT_TRUE(shows("behaves"));
    }

    const auto capture = camera->makeSession();
    capture->addInput(camera->makeInput(camera->defaultVideoDevice()));
    capture->addOutput(camera->makeMetadataOutput());
    capture->startRunning();
    const auto isDark = [&] {
        const auto picture = capture->preview().picture;
        return picture && std::ranges::all_of(picture->bytes, [](auto level) { return level == 0; });
    };
    press("Hold the QR code up");
    EXPECT_TRUE(await([&] { return capture->preview().picture && !isDark(); }));
    press("Take it away");
    EXPECT_TRUE(await(isDark));
}

} // namespace
} // namespace kivo::test
