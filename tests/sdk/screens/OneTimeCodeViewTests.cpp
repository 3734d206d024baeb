#include "support/HostScreenFixture.hpp"

namespace kivo {
namespace {

using platform::Color;
using test::Keys;
using test::Texts;

constexpr Color darkBlue{.red = 0, .green = 39.0 / 255, .blue = 118.0 / 255};

class OneTimeCodeView : public test::HostScreenFixture {
protected:
    using Configure = std::function<void(LuOTPView&)>;

    /// A view of 300 by 50 points on the host's screen, laid out.
    std::shared_ptr<LuOTPView> shown(const Configure& configure = {}) {
        if (view) {
            view->removeFromSuperview();
        }
        codes.clear();
        editing.clear();
        view = std::make_shared<LuOTPView>();
        if (configure) {
            configure(*view);
        }
        view->setPlacement({.top = 100, .left = 20, .width = 300, .height = 50});
        view->otpEnteredString = [this](std::string code) { codes.push_back(std::move(code)); };
        view->isEditing = [this](bool now) { editing.push_back(now); };
        host->view()->addSubview(view);
        window->layoutIfNeeded();
        return view;
    }

    std::string texts() const {
        Texts all;
        for (int tag = 1; tag <= view->otpTextFieldsCount; ++tag) {
            all.push_back(view->field(tag)->text());
        }
        return Keys::barred(all);
    }

    void press(std::string_view keys) { Keys::pressAll(*host, keys); }

    std::shared_ptr<LuOTPView> view;
    Texts codes;
    std::vector<bool> editing;
};

TEST_F(OneTimeCodeView, NamesItsFieldsFromTheLeftInEveryDirection) {
    window->setLayoutDirection(platform::LayoutDirection::rightToLeft);
    const auto code = shown();
    Texts names;
    for (const auto& element : platform::accessibilityElements(*window)) {
        if (element.role == platform::AccessibilityRole::textField) {
            names.push_back(element.name);
        }
    }
    EXPECT_EQ(names, (Texts{"Character 1 of 4", "Character 2 of 4", "Character 3 of 4", "Character 4 of 4"}));
}

TEST_F(OneTimeCodeView, CentresItsFields) {
    struct Row {
        int count;
        double size;
        double gap;
        std::vector<double> x;
    };

    const Row rows[] = {
        {1, 24, 15, {138}},
        {4, 24, 15, {79.5, 118.5, 157.5, 196.5}},
        {5, 24, 15, {60, 99, 138, 177, 216}},
        {2, 40, 0, {110, 150}},
        {0, 24, 15, {}},
    };
    for (const auto& row : rows) {
        shown([&](LuOTPView& otp) {
            otp.otpTextFieldsCount = row.count;
            otp.otpTextFieldSize = row.size;
            otp.otpTextFieldSeparatorSpace = row.gap;
        });
        ASSERT_EQ(view->subviews().size(), row.x.size());
        for (std::size_t i = 0; i < row.x.size(); ++i) {
            const auto& frame = view->subviews()[i]->frame();
            EXPECT_NEAR(frame.origin.x, row.x[i], 1e-9) << row.count << " fields, number " << i + 1;
            EXPECT_EQ(frame.origin.y, (50 - row.size) / 2);
            EXPECT_EQ(frame.size, (platform::Size{.width = row.size, .height = row.size}));
        }
    }
}

TEST_F(OneTimeCodeView, FollowsThePersonAlongTheFields) {
    struct Row {
        const char* what;
        Configure configure;
        const char* keys;
        const char* texts;
        const char* entries;
        int focus;
        const char* heard;
    };

    const auto secure = [](LuOTPView& otp) { otp.otpTextFieldEntrySecureType = true; };
    const auto blank = [](LuOTPView& otp) {
        otp.otpTextFieldEntrySecureType = true;
        otp.otpFilledEntryDisplay = true;
    };
    const auto letters = [](LuOTPView& otp) { otp.otpTextFieldInputType = KeyboardType::alphabet; };
    const Row rows[] = {
        {"four digits", {}, "1|2|3|4", "1|2|3|4", "1|2|3|4", 0, "1234"},
        {"masked", secure, "1|2|3|4", "*|*|*|*", "1|2|3|4", 0, "1234"},
        {"blank before masked", blank, "1|2", " | ||", "1|2||", 3, ""},
        {"out of order", {}, "@3|3|4|@1|1|2", "1|2|3|4", "1|2|3|4", 3, "1234"},
        {"replaced", {}, "1|@1|9", "9|||", "9|||", 2, ""},
        {"delete in an empty field", {}, "1|<", "|||", "|||", 1, ""},
        {"delete in a full field", {}, "1|2|@2|<", "1|||", "1|||", 2, ""},
        {"delete all the way", {}, "1|2|<|<|<", "|||", "|||", 1, ""},
        {"no letter in an alphabet", letters, "1", "|||", "|||", 1, ""},
        {"a letter of any script", letters, "\u00E9|\u0436", "\u00E9|\u0436||", "\u00E9|\u0436||", 3, ""},
        {"a pasted code", {}, "1234", "1234|||", "1234|||", 2, "1234"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        shown(row.configure)->getResponder();
        press(row.keys);
        EXPECT_EQ(texts(), row.texts);
        EXPECT_EQ(Keys::barred(view->secureEntryData()), row.entries);
        EXPECT_EQ(Keys::focus(), row.focus);
        EXPECT_EQ(Keys::barred(codes), row.heard);
        EXPECT_EQ(view->hasEnteredAllOTP(), !codes.empty());
    }
}

TEST_F(OneTimeCodeView, IsLaidOutByAHostsOwnStoryboard) {
    const auto made = [this](const std::string& members) {
        folder.write("Host.bundle/Bank.storyboard", R"({"scenes":{"code":{"class":"ViewController","view":{"subviews":[
            {"type":"LuOTPView","outlet":"code","placement":{"top":20,"left":0},)" +
                                                        members + "}]}}}}");
        const auto storyboard = platform::Storyboard::open("Bank", platform::services().bundles->main());
        return storyboard ? (*storyboard)->instantiate("code") : std::unexpected{storyboard.error()};
    };
    const auto screen = *made(R"("otpTextFieldsCount":3,"otpTextFieldInputType":"alphabet","otpTextFieldSize":40,
        "otpTextFieldSeparatorSpace":10,"otpTextFieldBorderWidth":1,"otpTextFieldDefaultBorderColor":"#FF0000",
        "otpTextFieldFontColor":"white","otpTextFieldFont":{"size":30},"otpTextFieldEntrySecureType":true,
        "subviews":[{"type":"LuOTPTextField","tag":2,"placeholderString":"?"}])");
    push(screen);
    const auto own = outlet<LuOTPView>(*screen, "code");
    EXPECT_EQ(own->frame().size, (platform::Size{.width = 140, .height = 40}));
    ASSERT_EQ(own->subviews().size(), 3U);
    own->getResponder();
    press("a|b|c");
    EXPECT_EQ(own->secureEntryData(), (Texts{"a", "b", "c"}));
    const auto second = own->field(2);
    EXPECT_EQ(second->placeholder(), "?");
    EXPECT_EQ(second->text(), "*");
    EXPECT_EQ(second->frame().origin.x, 50);
    EXPECT_EQ(second->keyboardType(), platform::KeyboardType::asciiCapable);
    EXPECT_EQ(second->font().pointSize, 30);
    EXPECT_EQ(second->textColor(), Color::white());
    EXPECT_EQ(second->layer().borderColor, (Color{.red = 1, .green = 0, .blue = 0}));
    EXPECT_EQ(second->layer().borderWidth, 1);

    for (const auto& [member, complaint] : {std::pair{R"("otpTextFieldsCount":2.5)", "whole number"},
                                            {R"("otpTextFieldInputType":"digits")", "\"alphaNumeric\""},
                                            {R"("otpTextFieldCount":4)", "otpTextFieldsCount"}}) {
        EXPECT_THAT(made(member).error(), testing::HasSubstr(complaint));
    }
}

TEST_F(OneTimeCodeView, TellsTheCodeBeforeItSetsTheBorders) {
    shown([](LuOTPView& otp) { otp.otpTextFieldsCount = 1; })->getResponder();
    EXPECT_EQ(editing, std::vector<bool>{true});
    view->otpEnteredString = [this](const std::string& code) {
        codes.push_back(code);
        view->otpEnteredString = nullptr;
        view->otpTextFieldDefaultBorderColor = Color::white();
    };
    press("7");
    EXPECT_EQ(codes, Texts{"7"});
    EXPECT_EQ(view->field(1)->layer().borderColor, Color::white());
    EXPECT_EQ(editing, (std::vector<bool>{true, false}));
}

TEST_F(OneTimeCodeView, HearsNoKeyThatAPersonCouldNotPress) {
    shown()->getResponder();
    press("1");
    for (const bool isCovered : {false, true}) {
        view->setHidden(!isCovered);
        view->field(2)->setEnabled(!isCovered);
        EXPECT_FALSE(view->field(2)->deleteBackward());
        EXPECT_EQ(view->secureEntryData().front(), "1");
    }
}

TEST_F(OneTimeCodeView, GivesTheFocusToWhereTypingGoesOn) {
    shown()->getResponder();
    EXPECT_EQ(Keys::focus(), 1);
    press("1");
    host->view()->endEditing();
    view->getResponder();
    EXPECT_EQ(Keys::focus(), 2);
    press("2|3|4|@2");
    view->getResponder();
    EXPECT_EQ(Keys::focus(), 4) << "a full row is taken up at its end";
    press("<");
    EXPECT_FALSE(view->hasEnteredAllOTP());
    EXPECT_EQ(view->aciveTextField(), view->field(3));
    EXPECT_EQ(view->field(3)->backgroundColor(), darkBlue);
    EXPECT_EQ(view->field(4)->backgroundColor(), Color::clear());
}

TEST_F(OneTimeCodeView, IsReleasedWithItsFields) {
    shown()->getResponder();
    const std::weak_ptr weak = view;
    const std::weak_ptr field = view->field(1);
    view->removeFromSuperview();
    view.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(field.expired());
}

} // namespace
} // namespace kivo
