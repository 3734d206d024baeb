#include "DesktopFixture.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/ScrollView.hpp>

#include <QBoxLayout>
#include <QClipboard>
#include <QPushButton>

namespace kivo::test {
namespace {

TEST_F(Desktop, ACodeIsTypedScannedForAndPasted) {
    showCodeScreen();
    click("textFieldDigitOne");
    xdotool({"type", "12z"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree") == "z"; }));
    xdotool({"key", "BackSpace"});
    EXPECT_TRUE(await([&] { return textOf("textFieldDigitThree").empty(); }));
    xdotool({"type", "3456"});
    EXPECT_TRUE(await([&] { return code == "123456"; })) << code;

    click("scanQRCodeButton");
    click("scanManuallyButton");
    EXPECT_TRUE(await([&] { return isThere("scanQRCodeButton"); }));

    navigation->popToViewController(host, /*animated=*/false);
    showCodeScreen(CodeTextFieldStyle::single);
    QGuiApplication::clipboard()->setText("A1B2C3");
    click("activationCodeTextField");
    xdotool({"key", "ctrl+v"});
    EXPECT_TRUE(await([&] { return code == "A1B2C3"; })) << code;
}

/// The phone between two other widgets of a host's window.
class DesktopKeyboard : public Desktop {
protected:
    DesktopKeyboard() {
        for (QWidget* const widget : std::initializer_list<QWidget*>{&before, &phone, &after}) {
            layout.addWidget(widget);
        }
        phone.setFocus();
    }

    ~DesktopKeyboard() override { phone.setParent(nullptr); }

    bool hasFocus() const { return QApplication::focusWidget() == &phone || phone.isAncestorOf(desk.focusWidget()); }

    QWidget desk;
    QVBoxLayout layout{&desk};
    QPushButton before{"before"};
    QPushButton after{"after"};
};

TEST_F(DesktopKeyboard, ReachesEveryScreenFromItsOpeningOn) {
    window->setSize({320, 300});
    window->setPreferredContentSizeCategory(platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge);
    showCodeScreen(CodeTextFieldStyle::single);
    EXPECT_FALSE(isThere("activationCodeTextField")) << "the field is below the fold";
    xdotool({"type", "--delay", "50", "A1B2C3"});
    EXPECT_TRUE(await([&] { return code == "A1B2C3"; })) << code;
    EXPECT_TRUE(isThere("activationCodeTextField"));
    navigation->popToViewController(host, /*animated=*/false);
    showCodeScreen();
    EXPECT_TRUE(tabTo("scanQRCodeButton"));
    EXPECT_TRUE(isThere("scanQRCodeButton"));
    xdotool({"key", "Return"});
    EXPECT_TRUE(await([&] { return window->find("scanManuallyButton") != nullptr; }));
    EXPECT_TRUE(tabTo("scanManuallyButton"));

    std::string answer;
    for (const auto& [key, expected] : {std::pair{"Return", "OK"}, {"Escape", "Cancel"}}) {
        const auto alert = std::make_shared<platform::AlertController>("", "Sure?");
        for (const auto* title : {"OK", "Cancel"}) {
            alert->addAction({.title = title, .handler = [&answer, title] { answer = title; }});
        }
        navigation->present(alert, /*animated=*/true);
        await([&] { return isThere("OK"); });
        xdotool({"key", key});
        EXPECT_TRUE(await([&] { return answer == expected; })) << key;
        EXPECT_TRUE(hasFocus());
    }
}

TEST_F(Desktop, AWheelScrollsByThreeLines) {
    const auto scroll = std::make_shared<platform::ScrollView>();
    scroll->setIdentifier("scroll");
    scroll->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
    const auto content = std::make_shared<platform::View>();
    content->setPlacement({.top = 0, .left = 0, .right = 0, .height = 2000});
    scroll->addSubview(content);
    host->view()->addSubview(scroll);
    click("scroll", "5");
    EXPECT_TRUE(await([&] { return scroll->contentOffset() > 0; }));
    EXPECT_EQ(scroll->contentOffset(), 60);
}

TEST_F(Desktop, TheDeviceIsClosedInTheMiddleOfASessionAndEndsCleanly) {
    phone.hide();
    QProcess program;
    program.start(KIVO_TEST_PROGRAMS "/kivo-device", {});
    xdotool({"search", "--sync", "--onlyvisible", "--name", "Kivo device", "windowfocus", "--sync"});
    xdotool({"key", "Tab", "Return"}); // to the code screen
    xdotool({"type", "--delay", "20", "12"});
    xdotool({"key", "ctrl+q"});
    ASSERT_TRUE(QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, patience));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
}

} // namespace
} // namespace kivo::test
