#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>
#include <QTest>
#include <chrono>
#include <typeinfo>

namespace kivo::test {
namespace {

/// A real window with real key and mouse events; `desktop` beside this file gives it a display.
class Desktop : public DeviceFixture {
protected:
    /// For a program to start or to end, in milliseconds; a sanitizer on a busy machine takes its time.
    static constexpr int patience = 60'000;

    void SetUp() override {
        if (QGuiApplication::platformName() != "xcb") {
            GTEST_SKIP() << "there is no X display";
        }
        phone.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&phone));
        xdotool({"windowfocus", "--sync", QString::number(phone.winId())});
        ASSERT_TRUE(QTest::qWaitForWindowActive(&phone));
    }

    /// While the tool works, so does the window.
    static void xdotool(const QStringList& arguments) {
        QProcess process;
        process.start("xdotool", arguments);
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience))
            << "xdotool hangs";
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }

    static platform::Point middleOf(const platform::View& view) {
        const auto frame = view.frameOnScreen();
        return {frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2};
    }

    /// As soon as it is there.
    void click(const std::string& name) {
        ASSERT_TRUE(await([&] { return isThere(name); })) << name;
        const auto middle = middleOf(*window->find(name));
        const auto onScreen = phone.mapToGlobal(QPointF{middle.x, middle.y}).toPoint();
        xdotool({"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
    }

    /// Time on the main queue goes by faster than in the window.
    template <class Condition>
    bool await(const Condition& condition) {
        return QTest::qWaitFor(
            [&] {
                clock->advance(std::chrono::milliseconds{20});
                mainLoop->drain();
                return condition();
            },
            patience);
    }

    /// In sight, and nothing in front of it.
    bool isThere(const std::string& name) const {
        window->layoutIfNeeded();
        const auto view = window->find(name);
        auto hit = view ? window->hitTest(middleOf(*view)) : nullptr;
        while (hit && hit != view) {
            hit = hit->superview();
        }
        return hit != nullptr;
    }

    std::string textOf(const std::string& field) const { return window->find<platform::TextField>(field)->text(); }

    std::string screen() const {
        const auto visible = window->visibleViewController();
        return typeid(*visible).name();
    }

    device::PhoneView phone{window};
};

TEST_F(Desktop, ACodeIsTypedScannedForAndPasted) {
    showCodeScreen();
    click("textFieldDigitOne");
    xdotool({"type", "12z"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree") == "z"; }));
    xdotool({"key", "BackSpace"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree").empty(); }));
    xdotool({"type", "3456"});
    EXPECT_TRUE(await([&] { return code == "123456"; })) << code;

    const auto codeScreen = screen();
    click("scanQRCodeButton");
    EXPECT_TRUE(await([&] { return screen() != codeScreen && isThere("scanManuallyButton"); }));
    click("scanManuallyButton");
    EXPECT_TRUE(await([&] { return screen() == codeScreen; }));

    navigation->popToViewController(host, /*animated=*/false);
    showCodeScreen(CodeTextFieldStyle::single);
    QGuiApplication::clipboard()->setText("A1B2C3");
    click("activationCodeTextField");
    xdotool({"key", "ctrl+v"});
    EXPECT_TRUE(await([&] { return code == "A1B2C3"; })) << code;
}

/// The same on the road behind the code: a joined session, and vendors whose screens wait for the mouse.
class DesktopRoad : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        if (IsSkipped()) {
            return;
        }
        installServices({}, service.trustedCertificates());
        services.fonts = device::fonts();
        services.faceTec = faceTec;
        services.readID = std::make_shared<simulator::ReadID>(simulator::Reading::byPerson());
        platform::install(services);
        const auto page = service.joinPage();
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

    simulator::IdentityService service;
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
