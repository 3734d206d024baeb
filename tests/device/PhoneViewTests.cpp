#include "DeviceFixture.hpp"
#include "support/Program.hpp"

#include <kivo/device/PhoneView.hpp>
#include <kivo/device/Pictures.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTest>
#include <array>
#include <chrono>
#include <csignal>

namespace kivo::test {
namespace {

using namespace platform;
using namespace std::chrono_literals;

class Phone : public DeviceFixture {
protected:
    Phone() {
        phone.setAnimated(false);
        phone.show();
        phone.activateWindow();
        QApplication::setActiveWindow(&phone);
    }

    QLineEdit* edit(const char* name) const { return phone.findChild<QLineEdit*>(name); }

    void tap(const std::string& name) {
        QTest::mouseClick(&phone, Qt::LeftButton, {}, middleOf(*window->find(name)).toPoint());
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

    device::PhoneView phone{window};
};

TEST_F(Phone, APictureOnAFullDiskIsToldAndLeavesNoFile) {
    const auto file = folder.path() / "small.png";
    std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t room : {0U, 100U}) {
        const LowLimit full{RLIMIT_FSIZE, room};
        const auto saved = device::Pictures::open()->save(*window, file, 0.1);
        ASSERT_FALSE(saved) << room;
        EXPECT_EQ(saved.error(), file.string() + " could not be written (File too large)");
        EXPECT_FALSE(exists(file));
    }
}

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

TEST_F(Phone, ATapAndAKeyReachWhatIsDrawnLargerOrSmaller) {
    showCodeScreen();
    for (const double zoom : {0.5, 1.75}) {
        phone.setZoom(zoom);
        settle();
        EXPECT_EQ(phone.size(), QSize(qRound(390 * zoom), qRound(844 * zoom)));
        const auto field = window->find<TextField>("textFieldDigitOne");
        const auto middle = (middleOf(*field) * zoom).toPoint();
        QTest::mouseClick(&phone, Qt::LeftButton, {}, middle);
        settle();
        ASSERT_TRUE(field->isFirstResponder()) << zoom;
        auto* const line = edit("textFieldDigitOne");
        EXPECT_TRUE(line->geometry().contains(middle)) << zoom;
        EXPECT_NEAR(line->geometry().width() / zoom, field->frame().size.width, 14);
        QTest::keyClicks(line, "7");
        EXPECT_EQ(field->text(), "7");
        EXPECT_TRUE(field->becomeFirstResponder());
        EXPECT_TRUE(field->deleteBackward());
    }
}

QRect toRect(const View& view) {
    const auto frame = view.frameOnScreen();
    return QRectF{frame.origin.x, frame.origin.y, frame.size.width, frame.size.height}.toRect();
}

/// A phone whose motion follows a clock of the test.
class MovingPhone : public Phone {
protected:
    MovingPhone() {
        phone.setClock([this] { return time; });
        phone.setAnimated(true);
    }

    /// A part of the display some time later.
    QImage after(std::chrono::milliseconds later, const QRect& part) {
        time += later;
        phone.synchronize();
        return phone.grab(part).toImage();
    }

    /// Whether that part of the display moves now. Half a second later it has come to rest.
    bool moves(const QRect& part) {
        const auto now = after(40ms, part);
        return now != after(500ms, part);
    }

    QRect rowOfBoxes() const {
        const auto first = window->find("textFieldDigitOne")->frameOnScreen();
        return {0, static_cast<int>(first.origin.y), 390, static_cast<int>(first.size.height)};
    }

    std::chrono::milliseconds time{1000};
};

TEST_F(MovingPhone, AScreenComesInByTheClockAndAtOnceForAPersonWhoWantsLessMotion) {
    const QRect right{350, 600, 1, 1};
    const QRect left{0, 600, 1, 1};
    const auto push = [&](const Color& color) {
        const auto screen = std::make_shared<ViewController>();
        screen->view()->setBackgroundColor(color);
        navigation->pushViewController(screen, /*animated=*/true);
        settle();
    };
    push(Color::white());
    after(500ms, left);
    push(Color{.red = 1, .green = 0, .blue = 0});
    EXPECT_EQ(after(0ms, right).pixelColor(0, 0), Qt::white);
    EXPECT_EQ(after(60ms, right).pixelColor(0, 0), Qt::red);
    EXPECT_NE(after(0ms, left).pixelColor(0, 0), Qt::red);
    EXPECT_EQ(after(220ms, left).pixelColor(0, 0), Qt::red);

    push(Color{.red = 0, .green = 0, .blue = 1});
    EXPECT_NE(after(60ms, left).pixelColor(0, 0), Qt::blue);
    phone.setAnimated(false);
    EXPECT_EQ(after(0ms, left).pixelColor(0, 0), Qt::blue);
    push(Color::black());
    EXPECT_EQ(after(0ms, left).pixelColor(0, 0), Qt::black);
}

TEST_F(MovingPhone, ABoxThatFillsAndACodeThatIsRefusedMove) {
    showCodeScreen();
    settle();
    after(500ms, {});
    const std::array names{"textFieldDigitOne",  "textFieldDigitTwo",  "textFieldDigitThree",
                           "textFieldDigitFour", "textFieldDigitFive", "textFieldDigitSix"};
    for (const bool isAnimated : {true, false}) {
        phone.setAnimated(isAnimated);
        tap(names.front());
        EXPECT_FALSE(moves(rowOfBoxes()));
        for (const auto* name : names) {
            window->find<TextField>(name)->setText("7");
            settle();
            EXPECT_EQ(moves(toRect(*window->find(name))), isAnimated) << name;
        }
        for (const auto* name : names) {
            window->find<TextField>(name)->setText("");
        }
        const auto alert = std::make_shared<AlertController>("", "The code is wrong.");
        alert->addAction({.title = "OK"});
        navigation->present(alert, /*animated=*/true);
        settle();
        after(500ms, {});
        EXPECT_FALSE(moves(rowOfBoxes())) << "the alert is told first";
        tap("OK");
        after(300ms, {});
        EXPECT_EQ(moves(rowOfBoxes()), isAnimated);
    }
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
