#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>
#include <QTest>
#include <typeinfo>

namespace kivo::test {
namespace {

/// A real window with real key and mouse events; `desktop` beside this file gives it a display.
/// For a program to start or to end, in milliseconds; a sanitizer on a busy machine takes its time.
constexpr int patience = 60'000;

class Desktop : public DeviceFixture {
protected:
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

    void click(const std::string& name) {
        window->layoutIfNeeded();
        const auto view = window->find(name);
        ASSERT_NE(view, nullptr) << name;
        const auto frame = view->frameOnScreen();
        const QPointF middle{frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2};
        const auto onScreen = phone.mapToGlobal(middle).toPoint();
        xdotool({"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", "1"});
    }

    bool waitForText(const std::string& name, const std::string& text) const {
        return QTest::qWaitFor([&] { return window->find<platform::TextField>(name)->text() == text; });
    }

    std::string screen() const {
        const auto visible = window->visibleViewController();
        return typeid(*visible).name();
    }

    device::PhoneView phone{window};
};

TEST_F(Desktop, ACodeIsTypedCorrectedAndSent) {
    showCodeScreen();
    click("textFieldDigitOne");
    xdotool({"type", "12z"});
    EXPECT_TRUE(waitForText("textFieldDigitThree", "z"));
    xdotool({"key", "BackSpace"});
    EXPECT_TRUE(waitForText("textFieldDigitThree", ""));
    xdotool({"type", "3456"});
    EXPECT_TRUE(QTest::qWaitFor([&] {
        mainLoop->drain();
        return code == "123456";
    })) << code;
}

TEST_F(Desktop, ACodeIsPastedIntoTheSingleField) {
    const auto theme = std::make_shared<ThemeCustomization>();
    theme->codeTextFieldStyle = CodeTextFieldStyle::single;
    showCodeScreen(theme);
    QGuiApplication::clipboard()->setText("A1B2C3");
    click("activationCodeTextField");
    xdotool({"key", "ctrl+v"});
    EXPECT_TRUE(QTest::qWaitFor([&] {
        mainLoop->drain();
        return code == "A1B2C3";
    })) << code;
}

TEST_F(Desktop, TheScannerIsOpenedAndLeftWithTheMouse) {
    showCodeScreen();
    const auto codeScreen = screen();
    click("scanQRCodeButton");
    EXPECT_TRUE(QTest::qWaitFor([&] {
        mainLoop->drain();
        return screen() != codeScreen && window->find("scanManuallyButton") != nullptr;
    }));
    click("scanManuallyButton");
    EXPECT_TRUE(QTest::qWaitFor([&] {
        mainLoop->drain();
        return screen() == codeScreen;
    }));
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
