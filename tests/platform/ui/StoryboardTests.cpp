#include "platform/bundle/FolderBundle.hpp"
#include "support/ScreenFixture.hpp"
#include "support/TemporaryFolder.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
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
