#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <QAccessible>
#include <QApplication>
#include <QMetaEnum>
#include <QTest>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace kivo::test {
namespace {

using namespace platform;

using Lines = std::vector<std::string>;

/// What Qt hands to a screen reader, as a line for each element, in its order: role, name, value, states, description.
void tell(QAccessibleInterface& around, Lines& lines) {
    for (int i = 0; i < around.childCount(); ++i) {
        auto& child = *around.child(i);
        const auto state = child.state();
        if (state.invisible || child.role() == QAccessible::Notification) {
            continue;
        }
        std::string line = QMetaEnum::fromType<QAccessible::Role>().valueToKey(child.role());
        const auto add = [&](const QString& text, const char* before) {
            line += text.isEmpty() ? std::string{} : before + text.toStdString();
        };
        add(child.text(QAccessible::Name), " ");
        add(child.text(QAccessible::Value), " = ");
        add(child.text(QAccessible::Description), ". ");
        line += state.focused ? ", focused" : "";
        line += state.disabled ? ", disabled" : "";
        line += state.busy ? ", busy" : "";
        line += state.modal ? ", modal" : "";
        lines.push_back(line);
        tell(child, lines);
    }
}

/// The screens as a screen reader and a keyboard meet them.
class ToldScreen : public DeviceFixture {
protected:
    ToldScreen() {
        phone.show();
        QApplication::setActiveWindow(&phone);
        phone.setFocus();
    }

    Lines told() {
        mainLoop->drain();
        phone.synchronize();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // of former screens
        Lines lines;
        tell(*QAccessible::queryAccessibleInterface(&phone), lines);
        return lines;
    }

    /// Shows a scene of the SDK's storyboard.
    std::shared_ptr<ViewController> show(const char* scene) {
        navigation->popToViewController(host, /*animated=*/false);
        const auto screen =
            Storyboard::open("ZORFramework", services.bundles->main()).value()->instantiate(scene).value();
        navigation->pushViewController(screen, /*animated=*/false);
        mainLoop->drain();
        return screen;
    }

    void alert(std::string title, const std::shared_ptr<ViewController>& over) {
        const auto shown = std::make_shared<AlertController>(std::move(title), "Really?");
        shown->addAction({.title = "OK"});
        shown->addAction({.title = "Cancel", .style = AlertController::ActionStyle::cancel});
        over->present(shown, /*animated=*/false);
    }

    /// Presses keys, each where the focus is then.
    void press(std::initializer_list<int> keys) {
        for (const auto key : keys) {
            QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
            mainLoop->drain();
            phone.synchronize();
        }
    }

    static std::string focus() { return QApplication::focusWidget()->objectName().toStdString(); }

    std::string announced() const { return phone.findChild<QWidget*>("announcement")->accessibleName().toStdString(); }

    device::PhoneView phone{window};
};

TEST_F(ToldScreen, IsToldInTheOrderOfReadingInEveryState) {
    const Lines head{"Button Back", "Heading Activation code", "Graphic Step 1 of 4", "Heading Get started",
                     "StaticText Enter your activation code"};
    const auto box = [](int number, const std::string& more = {}) {
        return "EditableText Activation code, character " + std::to_string(number) + " of 6" + more;
    };
    const std::string failure = "There is no connection to the service. Check the network, then enter the code again.";
    const std::string noCamera = "The camera cannot be used here. Type the code instead.";
    const auto fail = [this] {
        network->setReachable(false);
        session->join("123456", config(), [](const auto&) {});
    };

    const struct {
        const char* state;
        std::function<void()> reach;
        Lines before;
        Lines expected;
        std::string announced;
    } rows[] = {
        {"an empty code",
         [&] { showCodeScreen(); },
         head,
         {box(1, ", focused"), box(2), box(3), box(4), box(5), box(6), "StaticText or", "Button Scan the QR code"},
         "Activation code"},
        {"a part of a code",
         [&] { press({Qt::Key_7, Qt::Key_A}); },
         head,
         {box(1, " = 7"), box(2, " = a"), box(3, ", focused"), box(4), box(5), box(6), "StaticText or",
          "Button Scan the QR code"},
         "Activation code"},
        {"a code that did not join",
         fail,
         head,
         {box(1, ". " + failure + ", focused"), box(2), box(3), box(4), box(5), box(6), "StaticText " + failure,
          "StaticText or", "Button Scan the QR code"},
         failure},
        {"a question",
         [&] { alert("Leave", navigation); },
         {},
         {"AlertMessage Leave. Really?, modal", "Button OK, focused", "Button Cancel"},
         failure},
        {"an answered question",
         [&] { press({Qt::Key_Escape}); },
         head,
         {box(1, ". " + failure + ", focused"), box(2), box(3), box(4), box(5), box(6), "StaticText " + failure,
          "StaticText or", "Button Scan the QR code"},
         failure},
        {"a code in one field",
         [&] { showCodeScreen(CodeTextFieldStyle::single); },
         head,
         {"EditableText Activation code. Code", "StaticText or", "Button Scan the QR code"},
         "Activation code"},
        {"a full code",
         [&] {
             press({Qt::Key_A, Qt::Key_B});
             window->find<TextField>("activationCodeTextField")->paste("1234");
         },
         head,
         {"EditableText Activation code = ab1234. Code", "StaticText or", "Button Scan the QR code"},
         "Activation code"},
        {"a code that did not join in one field",
         fail,
         head,
         {"EditableText Activation code = ab1234. " + failure + ", focused", "StaticText " + failure, "StaticText or",
          "Button Scan the QR code"},
         failure},
        {"a scan without a camera",
         [&] { show("QRCodeScannerVC"); },
         {"Button Back", "Heading QR code", "Button Close"},
         {"Graphic Camera", "StaticText " + noCamera, "Button Type the code"},
         "QR code " + noCamera},
        {"a choice of documents",
         [&] {
             show("AuthMenuVCID");
             for (const auto* name : {"titleInfoLabel", "optionsContainerStackView"}) {
                 window->find(name)->setHidden(false);
             }
         },
         {"Button Back", "Heading Document"},
         {"Graphic Step 2 of 4", "Heading Choose your document", "Button Passport", "Button Identity card"},
         "Document"},
        {"a face scan",
         [&] { show("LivenessCheckVCID"); },
         {"Button Back", "Heading Face scan"},
         {"Graphic Step 3 of 4", "Button Close", "Heading Scan your face",
          "StaticText Hold the phone at eye level, in good light, and follow the instructions on the display.",
          "Button Start the scan"},
         "Face scan"},
        {"a wait",
         [&] { window->find("nextButton")->touch(); },
         {},
         {"ProgressBar Please wait a moment., busy"},
         "Please wait a moment."},
        {"a wait in another language",
         [&] {
             speak("de");
             show("LivenessCheckVCID");
             window->find("nextButton")->touch();
         },
         {},
         {"ProgressBar Bitte warten Sie einen Moment., busy"},
         "Gesichtsscan Bitte warten Sie einen Moment."},
        {"a step that is done",
         [&] {
             speak("en");
             show("LivenessCheckVCID");
             for (const auto* name : {"titleInfoLabel", "processDescriptionLabel", "nextButton", "closeButton"}) {
                 window->find(name)->setHidden(true);
             }
             window->find("stepDoneView")->setHidden(false);
         },
         {"Button Back", "Heading Face scan"},
         {"Graphic Step 3 of 4", "StaticText This step is done", "StaticText Please wait a moment."},
         "Face scan This step is done"},
        {"a card scan",
         [&] { show("OCRScanInitializeVC"); },
         {"Button Back", "Heading ID card"},
         {"Graphic Step 2 of 4", "StaticText The camera opens in a moment."},
         "ID card The camera opens in a moment."},
        {"the end",
         [&] { show("FinalStatusVC"); },
         {"Button Back"},
         {"Graphic Step 4 of 4", "Heading All done",
          "StaticText Your identity has been recorded. You can close the app now.", "Button Back to the start"},
         "All done"},
    };

    for (const auto& [state, reach, before, expected, announcement] : rows) {
        reach();
        auto all = before;
        all.insert(all.end(), expected.begin(), expected.end());
        EXPECT_EQ(told(), all) << state;
        EXPECT_EQ(announced(), announcement) << state;
    }
}

TEST_F(ToldScreen, GivesTheFocusBackAndNeverToWhatIsCovered) {
    showCodeScreen();
    told();
    press({Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab, Qt::Key_Tab});
    EXPECT_EQ(focus(), "scanQRCodeButton");
    press({Qt::Key_Up});
    EXPECT_EQ(focus(), "textFieldDigitSix");
    press({Qt::Key_Left, Qt::Key_Left});
    EXPECT_EQ(focus(), "textFieldDigitFour");
    press({Qt::Key_Right, Qt::Key_Down, Qt::Key_Down});
    EXPECT_EQ(focus(), "scanQRCodeButton");
    alert("", navigation);
    told();
    for (const auto* expected : {"OK", "Cancel", "OK", "Cancel"}) {
        EXPECT_EQ(focus(), expected);
        press({Qt::Key_Tab});
    }
    press({Qt::Key_Backtab});
    EXPECT_EQ(focus(), "Cancel");
    press({Qt::Key_Space});
    EXPECT_EQ(focus(), "scanQRCodeButton");

    for (const bool isMirrored : {false, true}) {
        window->setLayoutDirection(isMirrored ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight);
        show("QRCodeScannerVC");
        told();
        press({Qt::Key_Tab, isMirrored ? Qt::Key_Left : Qt::Key_Right});
        EXPECT_EQ(focus(), "rightBarButton");
        press({isMirrored ? Qt::Key_Right : Qt::Key_Left, Qt::Key_Return});
        EXPECT_EQ(navigation->topViewController(), host) << "the button at the line's begin goes back";
    }

    window->setSize({390, 300});
    const auto screen = show("LivenessCheckVCID");
    told();
    press({Qt::Key_PageDown});
    EXPECT_LT(window->find("titleInfoLabel")->frameOnScreen().top(), 91) << "the text is scrolled";
    window->find("nextButton")->touch();
    told();
    press({Qt::Key_Tab});
    EXPECT_EQ(QApplication::focusWidget(), &phone) << "all is covered";
    show("LivenessCheckVCID");
    told();
    press({Qt::Key_Escape});
    EXPECT_EQ(navigation->topViewController(), host);
}

TEST_F(ToldScreen, MarksTheFocusOnEveryGround) {
    const auto levels = [](const QImage& picture, const QRect& frame) {
        std::set<int> found;
        for (int x = frame.left() - 3; x <= frame.left() + 2; ++x) {
            found.insert(qGray(picture.pixel(x, frame.center().y())));
        }
        return found;
    };
    for (const auto style : {UserInterfaceStyle::light, UserInterfaceStyle::dark}) {
        window->setUserInterfaceStyle(style);
        showCodeScreen(CodeTextFieldStyle::single);
        told();
        for (const auto* name : {"activationCodeTextField", "scanQRCodeButton"}) {
            phone.findChild<QWidget*>(name)->setFocus(Qt::TabFocusReason);
            phone.synchronize();
            const auto frame = window->find(name)->frameOnScreen();
            const QRect place{qRound(frame.left()), qRound(frame.top()), qRound(frame.size.width),
                              qRound(frame.size.height)};
            // Black and white side by side: one of them stands out from any ground, with a contrast above 4.5.
            const auto found = levels(phone.grab().toImage(), place);
            EXPECT_LT(*found.begin(), 20) << name;
            EXPECT_GT(*found.rbegin(), 235) << name;
        }
    }
}

} // namespace
} // namespace kivo::test
