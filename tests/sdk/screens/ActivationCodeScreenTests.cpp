#include "Configuration/environment/SdkBundle.hpp"
#include "support/HostScreenFixture.hpp"

#include <fstream>
#include <iterator>

namespace kivo {
namespace {

using platform::Color;
using platform::TextField;
using test::Keys;
using test::Texts;
using testing::ElementsAre;

class ActivationCodeScreen : public test::HostScreenFixture {
protected:
    std::shared_ptr<QRCodeVC> shown(CodeTextFieldStyle style) { return pushed<QRCodeVC>(themed(style)); }

    static Theme themed(CodeTextFieldStyle style) {
        auto theme = closableTheme();
        theme->codeTextFieldStyle = style;
        return theme;
    }

    static std::shared_ptr<TextField> box(QRCodeVC& screen, int tag) {
        return std::dynamic_pointer_cast<TextField>(screen.view()->viewWithTag(tag));
    }

    static Texts boxes(QRCodeVC& screen) {
        Texts texts;
        for (int tag = 1; tag <= 6; ++tag) {
            texts.push_back(box(screen, tag)->text());
        }
        return texts;
    }

    /// The screen in the shipped layout with other words in it, as a host's own.
    std::shared_ptr<QRCodeVC> shownWith(const std::string& from, const std::string& to, CodeTextFieldStyle style) {
        std::ifstream file{*sdkBundle()->pathForResource("ZORFramework", "storyboard")};
        std::string layout{std::istreambuf_iterator{file}, {}};
        EXPECT_TRUE(layout.contains(from)) << from;
        for (auto at = layout.find(from); at != std::string::npos; at = layout.find(from, at + to.size())) {
            layout.replace(at, from.size(), to);
        }
        folder.write("Host.bundle/Own.storyboard", layout);
        const auto storyboard = platform::Storyboard::open("Own", platform::services().bundles->main());
        const auto made = storyboard ? (*storyboard)->instantiate("QRCodeVC") : std::unexpected{storyboard.error()};
        if (!made) {
            ADD_FAILURE() << made.error();
            return nullptr;
        }
        auto screen = std::dynamic_pointer_cast<QRCodeVC>(*made);
        screen->delegate = ears;
        screen->themeObj = themed(style);
        ears->restart();
        push(screen);
        return screen;
    }
};

TEST_F(ActivationCodeScreen, MayLackEveryOptionalOutlet) {
    for (const std::string outlet : {"activationCodeTextField", "activationCodeTitleLabel", "orTitleLabel",
                                     "getStartedTitleLabel", "scanQRCodeButton", "closeButton", "closeButtonWidth",
                                     "closeButtonHeight", "stackViewBoxedTextfield", "scanManuallyButton"}) {
        for (const auto style : {CodeTextFieldStyle::boxed, CodeTextFieldStyle::single}) {
            SCOPED_TRACE(outlet);
            const auto screen = shownWith('"' + outlet + '"', R"("noOutlet")", style);
            ASSERT_NE(screen, nullptr);
            const bool canType = style == CodeTextFieldStyle::boxed && outlet != "stackViewBoxedTextfield";
            EXPECT_EQ(box(*screen, 1)->insertText("123456"), canType);
            EXPECT_EQ(ears->heard.size(), canType ? 1U : 0U);
            EXPECT_TRUE(screen->performSegue("scannerSegueID"));
            settle();
            window->setPreferredContentSizeCategory(platform::ContentSizeCategory::small);
            window->setPreferredContentSizeCategory(platform::ContentSizeCategory::large);
            EXPECT_NE(navigation->topViewController(), screen);
            pop();
            pop();
        }
    }
}

TEST_F(ActivationCodeScreen, MayTakeTheKeyboardAway) {
    for (const auto* action : {"cancelEditing", "nextPressed"}) {
        const auto screen =
            shownWith(R"("closeButtonTap")", '"' + std::string{action} + '"', CodeTextFieldStyle::boxed);
        ASSERT_NE(screen, nullptr);
        Keys::press(*screen, "1");
        EXPECT_EQ(Keys::focus(), 2);
        EXPECT_TRUE(tap(*screen, "closeButton"));
        EXPECT_EQ(Keys::focus(), 0) << action;
        EXPECT_EQ(Keys::barred(boxes(*screen)), "1|||||") << action;
        pop();
    }
}

TEST_F(ActivationCodeScreen, FollowsThePersonAlongTheBoxes) {
    struct Row {
        const char* what;
        std::string keys;
        std::string boxes;
        int focus;
        std::string heard;
    };

    const std::string flag = "\U0001F1E9\U0001F1EA";
    const auto sixFlags = flag + '|' + flag + '|' + flag + '|' + flag + '|' + flag + '|' + flag;
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";
    const std::string accented = "e\u0301";
    const Row rows[] = {
        {"the first box has the focus", "", "|||||", 1, ""},
        {"six in a row", "1|2|3|4|5|6", "1|2|3|4|5|6", 0, "entered 123456"},
        {"case and letters stay", "a|B|c|D| |6", "a|B|c|D| |6", 0, "entered aBcD 6"},
        {"a new character replaces the old one", "1|2|@1|9", "9|2||||", 2, ""},
        {"out of order", "@3|3|4|5|6|@1|1|2", "1|2|3|4|5|6", 0, "entered 123456"},
        {"the sixth box alone", "@6|6", "|||||6", 0, ""},
        {"a pasted code", "123456", "123456|||||", 0, "entered 123456"},
        {"a code copied with a line's end and blanks", " \u00A0123456\r\n", "123456|||||", 0, "entered 123456"},
        {"a pasted line's end", "\n\u2028\t\n", "|||||", 1, ""},
        {"blanks and breaks inside", "12 3\n45", "12 345|||||", 0, "entered 12 345"},
        {"a pasted rest", "1|2|3456", "1|2|3456|||", 0, "entered 123456"},
        {"too much pasted", "1234567", "1234567|||||", 2, ""},
        {"too little pasted", "12345", "12345|||||", 2, ""},
        {"a pasted code over a full box", "1|@1|123456", "123456|||||", 0, "entered 123456"},
        {"delete in a full box", "1|@1|<", "|||||", 1, ""},
        {"delete in an empty box", "1|2|3|<", "1|2||||", 3, ""},
        {"delete all the way", "1|2|<|<|<|<", "|||||", 1, ""},
        {"delete in the empty first box", "<", "|||||", 1, ""},
        {"a corrected code", "1|2|3|4|5|6|@2|9", "1|9|3|4|5|6", 0, "entered 123456|entered 193456"},
        {"flags are one character", sixFlags, sixFlags, 0, "entered " + flag + flag + flag + flag + flag + flag},
        {"families and accents are one character", family + '|' + accented + "|3456",
         family + '|' + accented + "|3456|||", 0, "entered " + family + accented + "3456"},
        {"a mark joins the character before it", "e|\u0301|3|4|5|6", "e|\u0301|3|4|5|6", 0, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto screen = shown(CodeTextFieldStyle::boxed);
        Keys::pressAll(*screen, row.keys);
        EXPECT_EQ(Keys::barred(boxes(*screen)), row.boxes);
        EXPECT_EQ(Keys::focus(), row.focus);
        EXPECT_EQ(Keys::barred(ears->heard), row.heard);
    }
}

TEST_F(ActivationCodeScreen, TakesACodeOfExactlySixCharactersInTheSingleField) {
    struct Row {
        const char* what;
        const char* keys;
        const char* text;
        bool isCode;
    };

    const Row rows[] = {
        {"typed", "1|2|3|4|5|6", "123456", true},
        {"pasted", "123456", "123456", true},
        {"five", "12345", "12345", false},
        {"seven", "1234567", "1234567", false},
        {"seven, then a delete", "1234567|<", "123456", true},
        {"bytes do not count", "\u00E9\u00E9\u00E9", "\u00E9\u00E9\u00E9", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto screen = shown(CodeTextFieldStyle::single);
        const auto field = outlet<TextField>(*screen, "activationCodeTextField");
        ASSERT_TRUE(field->touch());
        Keys::pressAll(*screen, row.keys);
        EXPECT_EQ(field->text(), row.text);
        EXPECT_EQ(field->isFirstResponder(), !row.isCode);
        EXPECT_EQ(Keys::barred(ears->heard), row.isCode ? "entered 123456" : "");
        screen->resetActivationCodeFields(FailureKind::refused);
        EXPECT_EQ(field->text(), row.text) << "only boxes are reset";
    }
}

TEST_F(ActivationCodeScreen, ReturnsToTheBoxLastInUse) {
    const auto screen = shown(CodeTextFieldStyle::boxed);
    const auto touch = [this](double x, double y) { EXPECT_TRUE(window->hitTest({x, y})->touch()); };
    const auto row = outlet<platform::StackView>(*screen, "stackViewBoxedTextfield");
    window->layoutIfNeeded();
    for (int tag = 6; tag >= 1; --tag) {
        const auto frame = box(*screen, tag)->frameOnScreen();
        touch(frame.left() + 1, frame.top() + 1);
        EXPECT_EQ(Keys::focus(), tag) << "each box takes its own touches";
        for (int gap = 1; gap <= 5; ++gap) {
            const auto between = box(*screen, gap)->frameOnScreen().right() + row->spacing() / 2;
            touch(between, frame.bottom() - 1);
            EXPECT_EQ(Keys::focus(), tag) << "between the boxes the keyboard stays";
            outlet(*screen, "getStartedTitleLabel")->touch();
            EXPECT_EQ(Keys::focus(), 0) << "a tap beside the fields takes the keyboard away";
            touch(between, frame.top() + 1);
            EXPECT_EQ(Keys::focus(), tag);
        }
    }
}

TEST_F(ActivationCodeScreen, IsEmptyAgainAfterAPersonHasLeft) {
    const auto screen = shown(CodeTextFieldStyle::boxed);
    Keys::press(*screen, "1");
    cover();
    EXPECT_EQ(Keys::focus(), 0);
    pop();
    EXPECT_EQ(boxes(*screen), Texts(6));

    const auto plain = shown(CodeTextFieldStyle::single);
    outlet<TextField>(*plain, "activationCodeTextField")->setText("12");
    cover();
    pop();
    EXPECT_EQ(outlet<TextField>(*plain, "activationCodeTextField")->text(), "12") << "the single field keeps its text";
}

TEST_F(ActivationCodeScreen, BlamesTheCodeOnlyWhenTheServiceHasRefusedIt) {
    using Kind = FailureKind;
    const auto screen = shown(CodeTextFieldStyle::boxed);
    const auto error = outlet<platform::Label>(*screen, "codeErrorLabel");
    const std::string check = "That did not work. Please check the code and enter it again.";
    const std::string network = "There is no connection to the service. Check the network, then enter the code again.";
    const std::string wait = "That did not work. Wait for a while, then enter the code again.";
    const std::pair<Kind, std::string> rows[] = {
        {Kind::timedOut, network}, {Kind::refused, check}, {Kind::noNetwork, network}, {Kind::connection, network},
        {Kind::pins, wait},        {Kind::storage, wait},  {Kind::answer, wait},       {Kind::refused, check}};
    for (const auto& [reason, text] : rows) {
        screen->resetActivationCodeFields(reason);
        EXPECT_EQ(error->text(), text) << name(reason);
        EXPECT_EQ(box(*screen, 1)->accessibility().hint, text);
    }
}

TEST_F(ActivationCodeScreen, SaysThatACodeWasRefusedUntilAPersonGoesOn) {
    const auto screen = shown(CodeTextFieldStyle::boxed);
    const auto error = outlet(*screen, "codeErrorLabel");
    EXPECT_TRUE(error->isHidden());
    screen->resetActivationCodeFields(FailureKind::refused);
    EXPECT_FALSE(error->isHidden());
    Keys::press(*screen, "<");
    EXPECT_FALSE(error->isHidden()) << "nothing was typed";
    Keys::press(*screen, "1");
    EXPECT_TRUE(error->isHidden());
    screen->resetActivationCodeFields(FailureKind::refused);
    screen->performSegue("scannerSegueID");
    EXPECT_TRUE(error->isHidden());

    const auto single = shown(CodeTextFieldStyle::single);
    single->resetActivationCodeFields(FailureKind::refused);
    EXPECT_FALSE(outlet(*single, "codeErrorLabel")->isHidden());
    outlet<TextField>(*single, "activationCodeTextField")->touch();
    Keys::pressAll(*single, "1");
    EXPECT_TRUE(outlet(*single, "codeErrorLabel")->isHidden());
}

TEST_F(ActivationCodeScreen, HandsThemeAndItselfToTheScanner) {
    const auto screen = shown(CodeTextFieldStyle::boxed);
    Keys::press(*screen, "1");
    tap(*screen, "scanQRCodeButton");
    EXPECT_EQ(boxes(*screen), Texts(6)) << "before the scanner is there";
    settle();
    const auto scanner = std::dynamic_pointer_cast<QRCodeScannerVC>(navigation->topViewController());
    ASSERT_NE(scanner, nullptr);
    EXPECT_EQ(scanner->themeObj, screen->themeObj);
    EXPECT_EQ(scanner->delegate.lock(), screen);
    scanner->scanningSucceeded(R"({"code":"ABC"})");
    scanner->scanningSucceeded("no JSON");
    EXPECT_THAT(ears->heard, ElementsAre("scanned ABC", "invalid"));
}

TEST_F(ActivationCodeScreen, ShowsTheEntryStyleOfTheTheme) {
    for (const auto& [theme, boxed] :
         {std::pair{themed(CodeTextFieldStyle::boxed), true}, std::pair{themed(CodeTextFieldStyle::single), false},
          std::pair{Theme{}, false}}) {
        const auto screen = pushed<QRCodeVC>(theme);
        EXPECT_EQ(outlet(*screen, "activationCodeTextField")->isVisible(), !boxed);
        EXPECT_EQ(outlet(*screen, "stackViewBoxedTextfield")->isVisible(), boxed);
        EXPECT_EQ(outlet(*screen, "codeContainerButton")->isVisible(), boxed);
        EXPECT_EQ(Keys::focus(), boxed ? 1 : 0);
        pop();
    }
}

TEST_F(ActivationCodeScreen, HighlightsTheBoxThatHasTheFocus) {
    const auto active = Color::white(0.25);
    const auto inactive = Color::white(0.75);
    addColor("Kivo.TextFieled.active.BorderColor", active);
    addColor("Kivo.TextFieled.BorderColor", inactive);
    const auto theme = themed(CodeTextFieldStyle::boxed);
    theme->boxedActivationCodeTextFieldBorderWidth = 3;
    theme->boxedActivationCodeTextFieldCornerRadius = 6;
    const auto screen = pushed<QRCodeVC>(theme);
    const auto highlighted = [&] {
        int found = 0;
        for (int tag = 1; tag <= 6; ++tag) {
            const auto& layer = box(*screen, tag)->layer();
            EXPECT_EQ(layer.borderWidth, 3);
            EXPECT_EQ(layer.cornerRadius, 6);
            if (layer.borderColor == active) {
                found = found * 10 + tag;
            } else {
                EXPECT_EQ(layer.borderColor, inactive);
            }
        }
        return found;
    };
    for (const auto& [key, expected] :
         std::vector<std::pair<const char*, int>>{{"1", 2}, {"@5", 5}, {"<", 4}, {"@1", 1}, {"123456", 0}, {"@2", 2}}) {
        Keys::press(*screen, key);
        EXPECT_EQ(highlighted(), expected) << "after " << key;
    }
    screen->resetActivationCodeFields(FailureKind::refused);
    EXPECT_EQ(highlighted(), 1);
    EXPECT_EQ(Keys::focus(), 1);
    EXPECT_EQ(boxes(*screen), Texts(6));
}

} // namespace
} // namespace kivo
