#include "Desktop.hpp"

#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QClipboard>

namespace kivo::test {
namespace {

TEST_F(Desktop, ACodeIsTypedCorrectedAndSent) {
    showCodeScreen();
    click("textFieldDigitOne");
    xdotool({"type", "12z"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree") == "z"; }));
    xdotool({"key", "BackSpace"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree").empty(); }));
    xdotool({"type", "3456"});
    EXPECT_TRUE(await([&] { return code == "123456"; })) << code;
}

TEST_F(Desktop, ACodeIsPastedIntoTheSingleField) {
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->codeTextFieldStyle = CodeTextFieldStyle::single;
    showCodeScreen(theme);
    QGuiApplication::clipboard()->setText("A1B2C3");
    click("activationCodeTextField");
    xdotool({"key", "ctrl+v"});
    EXPECT_TRUE(await([&] { return code == "A1B2C3"; })) << code;
}

TEST_F(Desktop, TheScannerIsOpenedAndLeftWithTheMouse) {
    showCodeScreen();
    const auto codeScreen = screen();
    click("scanQRCodeButton");
    EXPECT_TRUE(await([&] { return screen() != codeScreen && window->find("scanManuallyButton") != nullptr; }));
    click("scanManuallyButton");
    EXPECT_TRUE(await([&] { return screen() == codeScreen; }));
}

/// The same on the road behind the code: a joined session, and vendors whose screens wait for the mouse.
class DesktopRoad : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        if (IsSkipped()) {
            return;
        }
        auto services = platform::linuxServices(
            {.mainBundle = {}, .dataFolder = folder.path(), .trustedCertificates = service.trustedCertificates()});
        services.fonts = device::fonts();
        services.mainQueue = mainLoop;
        services.faceTec = faceTec;
        services.readID = std::make_shared<simulator::ReadID>(simulator::Reading::byPerson());
        platform::install(services);
        const auto page = service.joinPage();
        Deployment::install({.joinPages = {page, page, page, page}});
        faceTec->waitsForPerson = true;
        session->join("123456", config, answer());
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
        session->acquire(object, config, answer());
    }

    /// As soon as it is there.
    void clickWhenThere(const std::string& control) {
        ASSERT_TRUE(await([&] { return isThere(control); })) << control;
        click(control);
    }

    simulator::IdentityService service;
    std::shared_ptr<simulator::FaceTec> faceTec = std::make_shared<simulator::FaceTec>();
    std::shared_ptr<AcquisitionConfig> config =
        std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT,ID_CARD", "P6M", "0.8", "UTO", "face");
    std::string heard;
};

TEST_F(DesktopRoad, ADocumentAndAFaceAreScannedWithTheMouse) {
    acquire(AcquisitionObject::nfcScan);
    clickWhenThere("passportOptionContainerView");
    clickWhenThere("readPageAndChip");
    EXPECT_TRUE(await([&] { return heard == "DOCUMENT_SCAN"; })) << heard;

    navigation->popToViewController(host, /*animated=*/false);
    acquire(AcquisitionObject::facemapScan);
    clickWhenThere("nextButton");
    clickWhenThere("refuseCameraButton");
    EXPECT_TRUE(await([&] { return heard == "CAMERA_PERMISSION_ERROR"; })) << heard;
    clickWhenThere("nextButton");
    clickWhenThere("finishScanButton");
    clickWhenThere("continueButton");
    EXPECT_TRUE(await([&] { return heard == "FACE_SCAN"; })) << heard;
    EXPECT_TRUE(service.violations().empty());
}

TEST_F(Desktop, TheDeviceIsClosedInTheMiddleOfASessionAndEndsCleanly) {
    phone.hide();
    QProcess program;
    program.start(KIVO_TEST_PROGRAMS "/kivo-device", {});
    xdotool({"search", "--sync", "--name", "Kivo device", "windowfocus", "--sync"});
    xdotool({"mousemove", "210", "190", "click", "1"}); // to the code screen
    xdotool({"type", "--delay", "20", "12"});
    xdotool({"key", "ctrl+q"});
    ASSERT_TRUE(QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, patience));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
}

} // namespace
} // namespace kivo::test
