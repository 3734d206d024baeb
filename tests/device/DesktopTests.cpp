#include "DeviceFixture.hpp"
#include "app/Host.hpp"
#include "app/SteeringPanel.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <chrono>

namespace kivo::test {
namespace {

/// A real window with real key and mouse events; `desktop` beside this file gives it a display.
class Desktop : public DeviceFixture {
protected:
    /// For anything awaited, in milliseconds; a sanitizer on a busy machine takes its time.
    static constexpr int patience = 20'000;

    void SetUp() override {
        if (QGuiApplication::platformName() != "xcb") {
            GTEST_SKIP() << "there is no X display";
        }
        auto& shown = *phone.window();
        shown.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&shown));
        xdotool({"windowfocus", "--sync", QString::number(shown.winId())});
        ASSERT_TRUE(QTest::qWaitForWindowActive(&shown));
    }

    /// While the tool works, so does the window.
    static void xdotool(const QStringList& arguments) {
        QProcess process;
        process.start("xdotool", arguments);
        ASSERT_TRUE(QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience))
            << "xdotool hangs";
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    }

    /// As soon as it is there. The fifth button turns the wheel down.
    void click(const std::string& name, const char* button = "1") {
        ASSERT_TRUE(await([&] { return isThere(name); })) << name;
        const auto onScreen = phone.mapToGlobal(middleOf(*window->find(name))).toPoint();
        xdotool({"mousemove", QString::number(onScreen.x()), QString::number(onScreen.y()), "click", button});
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
        const auto middle = view ? middleOf(*view) : QPointF{};
        auto hit = view ? window->hitTest({middle.x(), middle.y()}) : nullptr;
        while (hit && hit != view) {
            hit = hit->superview();
        }
        return hit != nullptr;
    }

    /// Presses Tab until the control of that name has the focus.
    bool tabTo(const QString& name) {
        for (int i = 0; i < 20; ++i) {
            const auto* const former = QApplication::focusWidget();
            xdotool({"key", "Tab"});
            const bool moved = await([&] { return QApplication::focusWidget() != former; });
            if (!moved || !phone.isAncestorOf(QApplication::focusWidget())) {
                return false;
            }
            if (QApplication::focusWidget()->objectName() == name) {
                return true;
            }
        }
        return false;
    }

    /// Goes to a button with Tab as soon as it is there, and presses the button with the key.
    void pressWith(const char* key, const std::string& name) {
        ASSERT_TRUE(await([&] { return isThere(name); })) << name;
        const auto* const focused = QApplication::focusWidget();
        const auto wanted = QString::fromStdString(name);
        ASSERT_TRUE((focused != nullptr && focused->objectName() == wanted) || tabTo(wanted)) << name;
        xdotool({"key", key});
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

/// The same on the road behind the code: a joined session, and vendors whose screens wait for the mouse.
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
