#include "DeviceFixture.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <gmock/gmock.h>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMetaEnum>
#include <QTest>

namespace kivo::test {
namespace {

using namespace platform;
using testing::Contains;
using testing::Each;
using testing::MatchesRegex;

class Phone : public DeviceFixture {
protected:
    Phone() {
        phone.setAnimated(false);
        phone.show();
        phone.activateWindow();
        QApplication::setActiveWindow(&phone);
    }

    QLineEdit* edit(const char* name) const { return phone.findChild<QLineEdit*>(name); }

    QPoint middleOf(const std::string& name) const {
        const auto frame = window->find(name)->frameOnScreen();
        return QPointF{frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2}.toPoint();
    }

    void tap(const std::string& name) {
        QTest::mouseClick(&phone, Qt::LeftButton, {}, middleOf(name));
        settle();
    }

    void settle() {
        mainLoop->drain();
        QApplication::processEvents();
    }

    /// Shows this view and nothing else.
    void showAlone(const std::shared_ptr<View>& view) {
        const auto screen = std::make_shared<ViewController>();
        screen->view()->addSubview(view);
        window->setRootViewController(screen);
        settle();
    }

    std::string textOf(const char* name) const { return window->find<TextField>(name)->text(); }

    device::PhoneView phone{window};
};

struct Refusing final : TextFieldDelegate {
    bool shouldChangeCharacters(TextField& /*field*/, TextRange /*range*/, const std::string& text) override {
        return text != "x";
    }
};

TEST_F(Phone, EditingGoesThroughTheFieldAndShowsWhatItMadeOfIt) {
    const auto field = std::make_shared<TextField>();
    field->setIdentifier("field");
    field->setPlacement({.top = 100, .left = 20, .width = 200, .height = 40});
    showAlone(field);
    tap("field");
    auto* const line = edit("field");
    QTest::keyClicks(line, "name");
    QTest::keyClick(line, Qt::Key_Home);
    QTest::keyClicks(line, "n");
    EXPECT_EQ(field->text(), "nname");
    QTest::keyClick(line, Qt::Key_Delete);
    EXPECT_EQ(field->text(), "name");
    line->setSelection(1, 2);
    QApplication::clipboard()->setText("ovell");
    line->paste();
    EXPECT_EQ(field->text(), "novelle");
    EXPECT_EQ(field->selection(), (TextRange{.location = 6, .length = 0}));

    QInputMethodEvent composing{"e\u0301", {}};
    QApplication::sendEvent(line, &composing);
    EXPECT_EQ(field->text(), "novelle") << "what is being composed is not yet typed";
    QInputMethodEvent done;
    done.setCommitString(QString::fromUtf8("\u65e5\u672c"));
    QApplication::sendEvent(line, &done);
    EXPECT_EQ(field->text(), "novell\u65e5\u672ce");

    field->setText("from the host");
    settle();
    EXPECT_EQ(line->text(), "from the host");

    const auto refusing = std::make_shared<Refusing>();
    field->setDelegate(refusing);
    QTest::keyClicks(line, "!x?");
    EXPECT_EQ(field->text(), "from the host!?");
    EXPECT_EQ(line->text(), "from the host!?");
}

TEST_F(Phone, ShowsChangesAsTheyHappenAndRepaintsNothingElse) {
    const auto box = std::make_shared<View>();
    box->setPlacement({.top = 100, .left = 50, .width = 20, .height = 20});
    box->setBackgroundColor(Color::black());
    window->setSafeArea({});
    showAlone(box);

    struct Watcher final : QObject {
        bool eventFilter(QObject* /*watched*/, QEvent* event) override {
            if (event->type() == QEvent::Paint) {
                painted += static_cast<QPaintEvent*>(event)->region();
            }
            return false;
        }

        QRegion painted;
    };

    Watcher watcher;
    phone.installEventFilter(&watcher);
    const auto colorAt = [&](int x, int y) { return phone.grab().toImage().pixelColor(x, y); };
    EXPECT_EQ(colorAt(60, 110), Qt::black);

    watcher.painted = {};
    box->setBackgroundColor(Color{.red = 1, .green = 0, .blue = 0});
    EXPECT_TRUE(QTest::qWaitFor([&] { return !watcher.painted.isEmpty(); }));
    EXPECT_EQ(watcher.painted.boundingRect(), QRect(49, 99, 22, 22));
    EXPECT_EQ(colorAt(60, 110), Qt::red);

    box->setPlacement({.top = 100, .left = 200, .width = 20, .height = 20});
    phone.synchronize();
    EXPECT_EQ(colorAt(60, 110), Qt::white);
    EXPECT_EQ(colorAt(210, 110), Qt::red);
    box->removeFromSuperview();
    settle();
    EXPECT_EQ(colorAt(210, 110), Qt::white);
}

TEST_F(Phone, ACoveredButtonCannotBeTapped) {
    showCodeScreen();
    const auto alert = std::make_shared<AlertController>("", "Sure?");
    bool isChosen = false;
    alert->addAction({.title = "OK", .handler = [&] { isChosen = true; }});
    navigation->present(alert, /*animated=*/false);
    settle();
    tap("scanQRCodeButton");
    EXPECT_EQ(window->visibleViewController(), alert);
    tap("OK");
    EXPECT_TRUE(isChosen);
    EXPECT_NE(window->visibleViewController(), alert);
}

/// A line for each control or text: its role and its name.
void describe(QAccessibleInterface* element, std::vector<std::string>& lines) {
    for (int i = 0; i < element->childCount(); ++i) {
        auto* const child = element->child(i);
        if (!child->state().invisible) {
            const auto* const role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(child->role());
            lines.push_back(std::string{role} + ' ' + child->text(QAccessible::Name).toStdString());
        }
        describe(child, lines);
    }
}

TEST_F(Phone, EveryElementHasARoleAndANameForAssistiveTechnology) {
    showCodeScreen();
    const auto wheel = std::make_shared<ActivityIndicatorView>();
    window->visibleViewController()->view()->addSubview(wheel);
    settle();
    std::vector<std::string> lines;
    describe(QAccessible::queryAccessibleInterface(&phone), lines);
    for (const auto* expected :
         {"StaticText Get started", "StaticText Enter your activation code",
          "EditableText Activation code, character 1 of 6", "EditableText Activation code, character 6 of 6",
          "Button Scan the QR code", "Button Back", "Animation Please wait"}) {
        EXPECT_THAT(lines, Contains(expected));
    }
    EXPECT_THAT(lines, Each(MatchesRegex("(Button|EditableText|StaticText|Animation|Graphic) .*[^ ]")));
}

TEST_F(Phone, AssistiveTechnologyAndTheKeyboardPressButtons) {
    int taps = 0;
    const auto button = std::make_shared<Button>();
    button->setIdentifier("button");
    button->setTitle("Go on");
    button->addAction(ControlEvent::touchUpInside, [&](const auto&) { ++taps; });
    showAlone(button);
    auto* const control = phone.findChild<QWidget*>("button");
    ASSERT_NE(control, nullptr);
    QAccessible::queryAccessibleInterface(control)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(QTest::qWaitFor([&] { return taps == 1; })) << "Qt shows the button pressed for a moment";
    QTest::keyClick(control, Qt::Key_Space);
    QTest::keyClick(control, Qt::Key_Return);
    EXPECT_EQ(taps, 3);
}

TEST_F(Phone, MayBeClosedInTheMiddleOfASession) {
    {
        device::PhoneView other{window};
        other.show();
        showCodeScreen();
        settle();
        window->find<TextField>("textFieldDigitOne")->becomeFirstResponder();
        settle();
    }
    EXPECT_TRUE(window->find<TextField>("textFieldDigitOne")->insertText("1"));
    settle();
    EXPECT_EQ(textOf("textFieldDigitOne"), "1");
}

} // namespace
} // namespace kivo::test
