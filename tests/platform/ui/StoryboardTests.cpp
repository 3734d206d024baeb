#include "platform/bundle/FolderBundles.hpp"
#include "support/ScreenFixture.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kivo::platform {
namespace {

class EntryScreen final : public ViewController {
public:
    void connect(Interface& interface) override {
        interface.outlet("field", field);
        interface.outlet("buttonWidth", buttonWidth);
        interface.action("close", [this](const auto&) { ++closings; });
    }

    void viewDidLoad() override { textAtLoad = field->text(); }

    void prepareForSegue(const Segue& segue) override { prepared = segue.identifier; }

    std::shared_ptr<TextField> field{};
    std::shared_ptr<LayoutConstraint> buttonWidth{};
    int closings = 0;
    std::string textAtLoad{"not loaded"};
    std::string prepared{};
};

constexpr auto good = R"({"scenes": {
  // what a person sees first
  "entry": {
    "class": "EntryScreen", "title": "Code",
    "view": {"subviews": [
      {"type": "TextField", "outlet": "field", "tag": 3, "keyboard": "numberPad", "text": {"key": "greeting"}},
      {"type": "Button", "outlet": "button", "title": "Close", "actions": {"touchUpInside": "close"},
       "backgroundColor": "#FF000080", "placement": {"width": 75, "height": 35}},
      {"type": "Button", "outlet": "next", "title": "Next",
       "segue": {"identifier": "onward", "destination": "second", "kind": "show"}}
    ]},
    "constraints": {"buttonWidth": {"view": "button", "dimension": "width"}}
  },
  "second": {"class": "ViewController", "view": {"backgroundColor": "white"}}
}})";

class StoryboardFile : public test::ScreenFixture {
protected:
    StoryboardFile() {
        Storyboard::registerScreen("EntryScreen", [] { return std::make_shared<EntryScreen>(); });
        folder_.write("en.lproj/Localizable.strings", R"("greeting" = "Hello";)");
    }

    std::expected<std::shared_ptr<Storyboard>, std::string> open(std::string_view content) {
        folder_.write("Test.storyboard", content);
        return Storyboard::open("Test", bundle_);
    }

    /// The error of opening the file, else of making its scene "entry".
    std::string errorOf(std::string content) {
        const auto storyboard = open(content);
        if (!storyboard) {
            return storyboard.error();
        }
        const auto screen = (*storyboard)->instantiate("entry");
        return screen ? "" : screen.error();
    }

    test::TemporaryFolder folder_;
    std::shared_ptr<Bundle> bundle_ = std::make_shared<FolderBundle>(folder_.path(), FolderBundle::Presence::expected,
                                                                     std::vector<std::string>{}, diagnostics_);
};

TEST_F(StoryboardFile, ConnectsAScreenBeforeItsViewLoads) {
    const auto storyboard = open(good);
    ASSERT_TRUE(storyboard) << storyboard.error();
    const auto made = (*storyboard)->instantiate("entry");
    ASSERT_TRUE(made) << made.error();
    const auto screen = std::dynamic_pointer_cast<EntryScreen>(*made);
    EXPECT_EQ(screen->field->text(), "Hello");
    EXPECT_EQ(screen->field->keyboardType(), KeyboardType::numberPad);
    EXPECT_EQ(screen->textAtLoad, "not loaded");
    EXPECT_EQ(screen->view()->viewWithTag(3), screen->field);
    EXPECT_EQ(screen->textAtLoad, "Hello");
    EXPECT_EQ(screen->buttonWidth->constant(), 75);
    EXPECT_EQ(screen->navigationItem()->title(), "Code");
    EXPECT_EQ(screen->view()->find("button")->backgroundColor(), (Color{1, 0, 0, 128.0 / 255}));
}

TEST_F(StoryboardFile, ItsButtonsCallActionsAndShowScreensWhileTheScreenLives) {
    const auto storyboard = open(good);
    auto screen = std::dynamic_pointer_cast<EntryScreen>(*(*storyboard)->instantiate("entry"));
    auto navigation = std::make_shared<NavigationController>(screen);
    window_->setRootViewController(navigation);
    settle();
    const auto view = screen->view();
    EXPECT_TRUE(view->find<Button>("button")->tap());
    EXPECT_EQ(screen->closings, 1);
    EXPECT_TRUE(view->find<Button>("next")->tap());
    EXPECT_EQ(screen->prepared, "onward");
    EXPECT_EQ(navigation->viewControllers().size(), 2U);
    EXPECT_FALSE(screen->performSegue("nowhere"));
    EXPECT_EQ(diagnostics_->texts().size(), 1U);

    const std::weak_ptr weak{screen};
    screen.reset();
    window_->setRootViewController(nullptr);
    navigation->popToViewController(navigation->viewControllers()[0], false);
    navigation.reset();
    settle();
    EXPECT_TRUE(weak.expired());
    const auto window = std::make_shared<Window>();
    window->addSubview(view);
    EXPECT_TRUE(view->find<Button>("button")->tap());
}

TEST_F(StoryboardFile, SaysInOneSentenceWhatDoesNotFit) {
    const auto with = [](std::string_view from, std::string_view to) {
        std::string content{good};
        content.replace(content.find(from), from.size(), to);
        return content;
    };
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"{\n  \"scenes\": {,}}", {"line 2, column 14", "no JSON"}},
        {"[]", {"must be an object"}},
        {"{}", {"\"scenes\" is missing"}},
        {with("EntryScreen", "Unknown"), {"scene \"entry\"", "no screen class \"Unknown\"", "EntryScreen"}},
        {with(R"("type": "TextField")", R"("type": "Field")"),
         {"view \"field\"", "no view type \"Field\"", "TextField"}},
        {with(R"("keyboard")", R"("keybord")"), {"view \"field\"", "\"keybord\"", "no such member", "keyboard"}},
        {with("numberPad", "numbers"), {"\"keyboard\"", "no \"numbers\"", "numberPad"}},
        {with(R"("outlet": "field")", R"("outlet": "fields")"),
         {"scene \"entry\"", "no view has the outlet \"field\"", "TextField"}},
        {with(R"("outlet": "next")", R"("outlet": "field")"), {"another view", "outlet \"field\""}},
        {with(R"("type": "TextField", "outlet": "field", "tag": 3, "keyboard": "numberPad")",
              R"("type": "Label", "outlet": "field")"),
         {"\"field\" is a Label", "needs a TextField"}},
        {with(R"("close")", R"("shut")"), {"view \"button\"", "no action \"shut\"", "close"}},
        {with(R"("touchUpInside": "close")", R"("tap": "close")"), {"\"tap\"", "no such event", "touchUpInside"}},
        {with(R"("destination": "second")", R"("destination": "third")"), {"destination \"third\"", "no scene"}},
        {with(R"("buttonWidth":)", R"("width":)"), {"no constraint \"buttonWidth\""}},
        {with(R"("view": "button")", R"("view": "buttons")"), {"no view of the scene has the outlet \"buttons\""}},
        {with(R"("width": 75)", R"("width": -75)"), {"view \"button\"", "\"width\"", "number from 0"}},
        {with(R"("tag": 3)", R"("tag": 3e99)"), {"\"tag\"", "whole number"}},
        {with(R"("tag": 3)", R"("tag": 1e999)"), {"number is beyond"}},
        {with("#FF000080", "#FF00"), {"\"#FF00\" is no colour", "#RRGGBB"}},
        {with(R"({"key": "greeting"})", "7"), {"\"text\"", "must be a text"}},
        {with("\"entry\":", "\"first\":"), {"no scene \"entry\""}},
        {with(R"("title": "Code")", R"("titel": "Code")"), {"\"titel\"", "a scene has no such member"}},
        {with(R"({"scenes")", R"({"more": 1, "scenes")"), {"\"more\"", "a storyboard has no such member"}},
        {with(R"("class": "ViewController")", R"("class": "")"), {"scene \"second\"", "\"class\"", "not empty"}},
        {with(R"("view": {"backgroundColor")", R"("view": {"subviews": 1, "backgroundColor")"), {"a list of views"}},
        {with(R"("view": {"backgroundColor": "white"})", R"("view": 1)"), {"must be an object"}},
        {with(R"("view": {"backgroundColor")", R"("view": {"subviews": [{"hidden": 1}], "backgroundColor")"),
         {"subview 1", "\"hidden\"", "true or false"}},
        {with(R"("dimension": "width")", R"("dimension": "depth")"), {"no \"depth\"", "\"width\", \"height\""}},
        {with(R"("kind": "show")", R"("kind": "hop")"), {"no \"hop\"", "\"show\", \"present\""}},
        {with(R"("kind": "show")", R"("king": "show")"), {"a segue has no such member"}},
        {with(R"({"width": 75, "height")", R"({"size": 75, "height")"), {"a placement has no such member"}},
        {with(R"("tag": 3)", R"("font": {"name": "Any"})"), {"\"size\" is missing"}},
        {with(R"("tag": 3)", R"("font": {"size": 501})"), {"number from 1 to 500"}},
        {with(R"("tag": 3)", R"("font": {"siz": 5})"), {"a font has no such member"}},
        {with(R"("tag": 3)", R"("layer": {"corner": 5})"), {"a layer has no such member"}},
        {with(
             R"("type": "TextField", "outlet": "field", "tag": 3, "keyboard": "numberPad", "text": {"key": "greeting"})",
             R"("type": "StackView", "margins": {"up": 1})"),
         {"margins have no such member"}},
        {std::string{"{\"scenes\": \"\xFF\"}"}, {"no JSON"}},
        {std::string(300, '['), {"line 1, column 257", "nested more than 256 deep"}},
    };
    ASSERT_EQ(errorOf(good), "");
    for (const auto& [content, parts] : cases) {
        const auto error = errorOf(content);
        EXPECT_THAT(error, testing::StartsWith((folder_.path() / "Test.storyboard").string()));
        for (const auto& part : parts) {
            EXPECT_THAT(error, testing::HasSubstr(part));
        }
    }
    EXPECT_THAT(Storyboard::open("Missing", bundle_).error(), testing::HasSubstr("no such resource"));
    ASSERT_EQ(mkfifo((folder_.path() / "Pipe.storyboard").c_str(), 0600), 0);
    EXPECT_THAT(Storyboard::open("Pipe", bundle_).error(), testing::HasSubstr("is not a file"));
}

TEST_F(StoryboardFile, SetsTheMembersOfEachClass) {
    const auto storyboard = open(R"({"scenes": {"entry": {
      "class": "ViewController", "presentation": "fullScreen", "view": {
        "hidden": true, "alpha": 0.5, "tintColor": "#01020304", "userInteractionEnabled": false, "passesTouches": true,
        "accessibilityLabel": "all", "placement": {"top": 1, "left": -2, "centerX": 3, "ignoresSafeArea": true},
        "layer": {"cornerRadius": 4, "borderWidth": 5, "borderColor": "black", "masksToBounds": true}, "subviews": [
        {"type": "StackView", "outlet": "row", "axis": "horizontal", "spacing": 6, "alignment": "trailing",
         "distribution": "fillEqually", "margins": 7},
        {"type": "StackView", "outlet": "column", "margins": {"top": 1, "left": 2, "bottom": 3, "right": 4}},
        {"type": "Label", "outlet": "label", "text": "t", "textAlignment": "right", "textColor": "systemBlue",
         "adjustsFont": true, "shrinksToWords": true, "font": {"size": 8, "scaled": true}},
        {"type": "TextField", "outlet": "field", "placeholder": "p", "keyboard": "asciiCapable", "autocorrected": false},
        {"type": "Button", "outlet": "button", "enabled": false, "image": "none", "backgroundImage": "none"},
        {"type": "ActivityIndicatorView", "outlet": "wheel", "color": "white", "animating": true},
        {"type": "ImageView", "outlet": "picture", "image": "none"}]}}}})");
    ASSERT_TRUE(storyboard) << storyboard.error();
    const auto screen = *(*storyboard)->instantiate("entry");
    EXPECT_EQ(screen->modalPresentationStyle(), ModalPresentationStyle::fullScreen);
    const auto view = screen->view();
    EXPECT_TRUE(view->isHidden() && !view->isUserInteractionEnabled() && view->passesTouches());
    EXPECT_EQ(view->alpha(), 0.5);
    EXPECT_EQ(view->tintColor(), (Color{1 / 255.0, 2 / 255.0, 3 / 255.0, 4 / 255.0}));
    EXPECT_EQ(view->accessibilityLabel(), "all");
    EXPECT_EQ(view->placement(), (Placement{.top = 1, .left = -2, .centerX = 3, .ignoresSafeArea = true}));
    EXPECT_EQ(view->layer(), (Layer{4, 5, Color::black(), true}));
    const auto row = view->find<StackView>("row");
    EXPECT_TRUE(row->axis() == StackView::Axis::horizontal && row->alignment() == StackView::Alignment::trailing &&
                row->distribution() == StackView::Distribution::fillEqually);
    EXPECT_EQ(row->spacing(), 6);
    EXPECT_EQ(row->margins(), (EdgeInsets{7, 7, 7, 7}));
    EXPECT_EQ(view->find<StackView>("column")->margins(), (EdgeInsets{1, 2, 3, 4}));
    const auto label = view->find<Label>("label");
    EXPECT_TRUE(label->adjustsFontForContentSizeCategory() && label->shrinksToWords() && label->font().isScaled);
    EXPECT_EQ(label->textAlignment(), TextAlignment::right);
    EXPECT_EQ(label->textColor(), Color::systemBlue());
    EXPECT_EQ(label->font().pointSize, 8);
    const auto field = view->find<TextField>("field");
    EXPECT_TRUE(field->placeholder() == "p" && !field->isAutocorrected());
    EXPECT_EQ(field->keyboardType(), KeyboardType::asciiCapable);
    EXPECT_FALSE(view->find<Button>("button")->isEnabled());
    const auto wheel = view->find<ActivityIndicatorView>("wheel");
    EXPECT_TRUE(wheel->isAnimating() && wheel->color() == Color::white());
}

TEST_F(StoryboardFile, NamesValuesAndStylesInOnePlace) {
    folder_.write("en.lproj/Localizable.strings", R"("Go on" = "Continue"; "greeting" = "Hello";)");
    const auto storyboard = open(R"({
      "values": {"wide": 44, "part": 0.5, "large": {"size": 30, "scaled": true}},
      "styles": {"main": {"font": "large", "textColor": "white", "textAlignment": "center",
                          "placement": {"leading": "wide", "trailing": 1, "maximumWidth": 440, "shareOfDisplay": "part"}}},
      "scenes": {"entry": {"class": "ViewController", "view": {"appearance": "dark", "direction": "rightToLeft", "subviews": [
        {"type": "Label", "outlet": "first", "style": "main", "text": "Go on"},
        {"type": "Label", "outlet": "second", "textColor": "black", "style": "main", "text": "Stop",
         "placement": {"grows": true}},
        {"type": "StackView", "outlet": "stack", "margins": "wide"}]}}}})");
    ASSERT_TRUE(storyboard) << storyboard.error();
    const auto view = (*(*storyboard)->instantiate("entry"))->view();
    EXPECT_EQ(view->userInterfaceStyle(), UserInterfaceStyle::dark);
    EXPECT_EQ(view->layoutDirection(), LayoutDirection::rightToLeft);
    const auto first = view->find<Label>("first");
    EXPECT_EQ(first->text(), "Continue");
    EXPECT_EQ(first->font(), (Font{.pointSize = 30, .isScaled = true}));
    EXPECT_EQ(first->placement(),
              (Placement{.leading = 44, .trailing = 1, .maximumWidth = 440, .shareOfDisplay = 0.5}));
    const auto second = view->find<Label>("second");
    EXPECT_EQ(second->text(), "Stop");
    EXPECT_EQ(second->textColor(), Color::black());
    EXPECT_EQ(second->textAlignment(), TextAlignment::center);
    EXPECT_EQ(second->placement(), (Placement{.grows = true}));
    EXPECT_EQ(view->find<StackView>("stack")->margins(), (EdgeInsets{44, 44, 44, 44}));

    const std::pair<std::string, std::string> faults[] = {
        {R"({"values": {}, "scenes": {"s": {"class": "ViewController", "view": {"alpha": "half"}}}})",
         "no value \"half\""},
        {R"({"scenes": {"s": {"class": "ViewController", "view": {"alpha": "half"}}}})", "a number from 0 to 1"},
        {R"({"values": {"half": 2}, "scenes": {"s": {"class": "ViewController", "view": {"alpha": "half"}}}})",
         "a number from 0 to 1"},
        {R"({"scenes": {"s": {"class": "ViewController", "view": {"style": "loud"}}}})", "no style \"loud\""},
        {R"({"styles": {"loud": {"volume": 1}}, "scenes": {"s": {"class": "ViewController", "view": {"style": "loud"}}}})",
         "no such member"},
        {R"({"styles": {"loud": 1}, "scenes": {"s": {"class": "ViewController", "view": {"style": "loud"}}}})",
         "must be an object"},
        {R"({"styles": [], "scenes": {}})", "must be an object"},
    };
    for (const auto& [file, problem] : faults) {
        const auto broken = open(file);
        ASSERT_FALSE(broken) << file;
        EXPECT_THAT(broken.error(), testing::HasSubstr(problem));
    }
}

TEST_F(StoryboardFile, MakesRegisteredViewsForScenesInUseOnly) {
    int made = 0;
    Storyboard::registerView("Lens", [&made] {
        ++made;
        return std::make_shared<TextField>();
    });
    const auto scene = [](const char* member) {
        return std::string{R"({"scenes":{"s":{"class":"ViewController","view":{"subviews":[{"type":"Lens",)"} + member +
               "}]}}}}";
    };
    const auto storyboard = open(scene(R"("keyboard":"numberPad")"));
    ASSERT_TRUE(storyboard) << storyboard.error();
    EXPECT_EQ(made, 0) << "a view may use the camera from its start";
    EXPECT_TRUE((*storyboard)->instantiate("s"));
    EXPECT_EQ(made, 1);
    EXPECT_THAT((*open(scene(R"("keybord":"numberPad")")))->instantiate("s").error(), testing::HasSubstr("keybord"));
    Storyboard::registerView("Lens", nullptr);
}

TEST_F(StoryboardFile, RefusesATreeTooDeepToBuild) {
    std::string view = "{}";
    for (int i = 0; i < 5000; ++i) {
        view = R"({"subviews": [)" + view + "]}";
    }
    EXPECT_THAT(errorOf(R"({"scenes": {"entry": {"class": "ViewController", "view": )" + view + "}}}"),
                testing::HasSubstr("flatten the tree"));
}

} // namespace
} // namespace kivo::platform
