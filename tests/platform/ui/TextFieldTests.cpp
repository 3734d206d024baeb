#include "support/ScreenFixture.hpp"

#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <functional>
#include <utility>

namespace kivo::platform {
namespace {

class Journal final : public TextFieldDelegate {
public:
    bool textFieldShouldBeginEditing(TextField& field) override {
        note(field, "?begin");
        return allowsBegin;
    }

    void textFieldDidBeginEditing(TextField& field) override { note(field, "began"); }

    void textFieldDidEndEditing(TextField& field) override { note(field, "ended"); }

    bool shouldChangeCharacters(TextField& field, TextRange range, const std::string& replacement) override {
        note(field, "?" + std::to_string(range.location) + "+" + std::to_string(range.length) + "=" + replacement);
        return onChange ? onChange(field) : true;
    }

    bool keyboardInputShouldDelete(TextField& field) override {
        note(field, "?delete");
        return true;
    }

    void note(const TextField& field, const std::string& step) { text += field.identifier() + step + " "; }

    std::string text{};
    bool allowsBegin = true;
    std::function<bool(TextField&)> onChange{};
};

class TextFieldEditing : public test::ScreenFixture {
protected:
    TextFieldEditing() { window_->setRootViewController(screen_); }

    ~TextFieldEditing() override {
        if (const auto editing = Keyboard::firstResponder()) {
            editing->resignFirstResponder();
        }
    }

    std::shared_ptr<TextField> field(const std::string& name) {
        auto made = std::make_shared<TextField>();
        made->setIdentifier(name);
        made->setDelegate(journal_);
        for (const auto& [event, word] :
             {std::pair{ControlEvent::editingDidBegin, "begin!"}, std::pair{ControlEvent::editingChanged, "change!"},
              std::pair{ControlEvent::editingDidEnd, "end!"}}) {
            made->addAction(
                event, [this, word](const auto& sender) { journal_->note(dynamic_cast<TextField&>(*sender), word); });
        }
        screen_->view()->addSubview(made);
        return made;
    }

    std::string journal() { return std::exchange(journal_->text, {}); }

    std::shared_ptr<ViewController> screen_ = std::make_shared<ViewController>();
    std::shared_ptr<Journal> journal_ = std::make_shared<Journal>();
};

TEST_F(TextFieldEditing, CallsDelegateAndEventsInTheirOrder) {
    const auto a = field("a");
    const auto b = field("b");
    EXPECT_TRUE(a->insertText("1"));
    EXPECT_EQ(journal(), "a?begin abegan abegin! a?0+0=1 achange! ");
    EXPECT_TRUE(b->touch());
    EXPECT_EQ(journal(), "b?begin aended aend! bbegan bbegin! ");
    EXPECT_FALSE(b->deleteBackward());
    EXPECT_EQ(journal(), "b?delete ");
    journal_->onChange = [](const auto&) { return false; };
    EXPECT_FALSE(b->insertText("2"));
    EXPECT_EQ(b->text(), "");
    journal_->allowsBegin = false;
    journal();
    EXPECT_FALSE(a->becomeFirstResponder());
    EXPECT_TRUE(b->isFirstResponder());
    EXPECT_TRUE(screen_->view()->endEditing());
    EXPECT_EQ(journal(), "a?begin bended bend! ");
}

TEST_F(TextFieldEditing, DeletesWhatAPersonSeesAsOneCharacter) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"ab", "a"},
        {"x🇺🇾", "x"},
        {"x👨‍👩‍👧‍👦", "x"},
        {"xe\u0301\u0323", "x"},
        {"👍🏽👍", "👍🏽"},
        {"x\xF0\x9F", "x\xF0"},
        {"\xFF", ""},
    };
    const auto a = field("a");
    for (const auto& [typed, left] : cases) {
        SCOPED_TRACE(typed);
        a->setText("");
        EXPECT_TRUE(a->insertText(typed));
        EXPECT_TRUE(a->deleteBackward());
        EXPECT_EQ(a->text(), left);
    }
}

TEST_F(TextFieldEditing, ReplacesTheSelectionAndKeepsTheCursorBehindAJoinedAccent) {
    const auto a = field("a");
    a->setText("🇺🇾bcd");
    a->setSelection({.location = 1, .length = 2});
    EXPECT_TRUE(a->insertText("é"));
    EXPECT_EQ(a->text(), "🇺🇾éd");
    EXPECT_EQ(a->selection(), (TextRange{.location = 2, .length = 0}));
    a->setText("ed");
    a->setSelection({.location = 1, .length = 0});
    EXPECT_TRUE(a->insertText("\u0301"));
    EXPECT_EQ(a->selection(), (TextRange{.location = 1, .length = 0}));
    a->setSelection({.location = 7, .length = 7});
    EXPECT_EQ(a->selection(), (TextRange{.location = 2, .length = 0}));
}

TEST_F(TextFieldEditing, ADelegateMayEmptyTheFieldAndLetTheChangePass) {
    const auto a = field("a");
    a->setText("1");
    journal_->onChange = [](TextField& field) {
        field.setText("");
        return true;
    };
    EXPECT_TRUE(a->insertText("2"));
    EXPECT_EQ(a->text(), "2");
}

TEST_F(TextFieldEditing, KeepsAttributesWhilePersonsTypeAndDropsThemWithAPlainText) {
    const auto a = field("a");
    a->setAttributedText(AttributedText{.text = "1", .kern = 4});
    a->insertText("2");
    EXPECT_EQ(a->attributedText(), (AttributedText{.text = "12", .kern = 4}));
    a->setText("3");
    EXPECT_FALSE(a->attributedText());
}

TEST_F(TextFieldEditing, TakesInputOnlyWhereAPersonCouldGiveIt) {
    const std::vector<std::pair<std::string, std::function<void(TextField&)>>> obstacles{
        {"hidden", [](auto& view) { view.setHidden(true); }},
        {"transparent", [](auto& view) { view.setAlpha(0); }},
        {"disabled", [](auto& view) { view.setEnabled(false); }},
        {"without interaction", [](auto& view) { view.setUserInteractionEnabled(false); }},
        {"in a hidden view", [](auto& view) { view.superview()->setHidden(true); }},
        {"in no window", [](auto& view) { view.removeFromSuperview(); }},
    };
    for (const auto& [name, obstruct] : obstacles) {
        SCOPED_TRACE(name);
        const auto a = field("a");
        obstruct(*a);
        EXPECT_FALSE(a->insertText("1"));
        EXPECT_FALSE(a->isFirstResponder());
        EXPECT_EQ(a->text(), "");
        screen_->view()->setHidden(false);
    }
}

TEST_F(TextFieldEditing, LeavesTheKeyboardToAFieldThatAPersonCanReach) {
    /// Wants the keyboard as soon as it is made.
    struct Form final : ViewController {
        void viewDidLoad() override {
            view()->addSubview(own);
            own->becomeFirstResponder();
        }

        std::shared_ptr<TextField> own = std::make_shared<TextField>();
    };

    const auto a = field("a");
    const Form unseen;
    EXPECT_TRUE(unseen.own->becomeFirstResponder()) << "which nobody has";
    EXPECT_TRUE(a->becomeFirstResponder());
    EXPECT_FALSE(unseen.own->becomeFirstResponder());
    const auto over = std::make_shared<Form>();
    screen_->present(over, false);
    EXPECT_TRUE(over->own->isFirstResponder());
    EXPECT_FALSE(a->becomeFirstResponder()) << "covered";
    EXPECT_TRUE(over->own->isFirstResponder());
    over->dismiss(false);
    EXPECT_TRUE(a->becomeFirstResponder());

    const auto navigation = std::make_shared<NavigationController>(std::make_shared<Form>());
    window_->setRootViewController(navigation);
    const auto next = std::make_shared<Form>();
    navigation->pushViewController(next, false);
    EXPECT_TRUE(next->own->isFirstResponder()) << "the former screen's field goes with its screen";
}

TEST_F(TextFieldEditing, MayGoAwayInTheMiddleOfItsOwnEvents) {
    for (const auto event :
         {ControlEvent::editingDidBegin, ControlEvent::editingChanged, ControlEvent::editingDidEnd}) {
        auto a = field("a");
        const std::weak_ptr weak{a};
        a->addAction(event, [](const auto& sender) { sender->removeFromSuperview(); });
        auto* const raw = std::exchange(a, nullptr).get();
        raw->insertText("1");
        if (const auto alive = weak.lock()) {
            alive->resignFirstResponder();
        }
        EXPECT_TRUE(weak.expired());
        EXPECT_EQ(Keyboard::firstResponder(), nullptr);
    }
}

TEST_F(TextFieldEditing, TheKeyboardComesAndGoesButStaysBetweenFields) {
    std::string seen;
    std::optional<Rect> begin;
    const auto& center = NotificationCenter::defaultCenter();
    const auto shown = center->addObserver(std::string{keyboardWillShow}, [&](const Notification& notification) {
        seen += "show ";
        begin = std::any_cast<KeyboardFrame>(notification.object).begin;
    });
    const auto hidden = center->addObserver(std::string{keyboardWillHide}, [&](const auto&) { seen += "hide "; });
    auto a = field("a");
    const auto b = field("b");
    a->becomeFirstResponder();
    b->becomeFirstResponder();
    EXPECT_EQ(seen, "show ");
    EXPECT_EQ(begin.value_or(Rect{}).top(), 844);
    b->resignFirstResponder();
    EXPECT_EQ(seen, "show hide ");
    a->becomeFirstResponder();
    a->removeFromSuperview();
    a.reset();
    EXPECT_EQ(seen, "show hide show hide ");
}

} // namespace
} // namespace kivo::platform
