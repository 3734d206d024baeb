#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/simulator/Person.hpp>

#include <gmock/gmock.h>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;
using namespace platform;
using testing::HasSubstr;

class PersonTest : public test::ScreenFixture {
protected:
    PersonTest() {
        window_->setRootViewController(navigation_);
        add(title_, "title", {.top = 0, .left = 0});
        add(first_, "first", {.top = 40, .left = 0, .width = 100, .height = 40});
        add(second_, "second", {.top = 90, .left = 0, .width = 100, .height = 40});
        add(next_, "nextButton", {.top = 150, .left = 0, .width = 100, .height = 40});
        title_->setText("Enter your code");
        next_->setTitle("Next");
        next_->addAction(ControlEvent::touchUpInside, [this](const auto&) { ++taps_; });
    }

    void add(const std::shared_ptr<View>& view, const std::string& name, const Placement& placement) {
        view->setIdentifier(name);
        view->setPlacement(placement);
        screen_->view()->addSubview(view);
    }

    std::shared_ptr<ViewController> screen_ = std::make_shared<ViewController>();
    std::shared_ptr<NavigationController> navigation_ = std::make_shared<NavigationController>(screen_);
    std::shared_ptr<Label> title_ = std::make_shared<Label>();
    std::shared_ptr<TextField> first_ = std::make_shared<TextField>();
    std::shared_ptr<TextField> second_ = std::make_shared<TextField>();
    std::shared_ptr<Button> next_ = std::make_shared<Button>();
    int taps_ = 0;
    Person person_{window_, loop_, clock_};
};

TEST_F(PersonTest, TypesIntoWhicheverFieldHasTheKeyboard) {
    first_->addAction(ControlEvent::editingChanged, [this](const auto&) { second_->becomeFirstResponder(); });
    EXPECT_TRUE(person_.type("first", "🇺🇾23"));
    EXPECT_EQ(first_->text(), "🇺🇾");
    EXPECT_EQ(second_->text(), "23");
    EXPECT_TRUE(person_.pressDelete(1));
    EXPECT_TRUE(person_.paste("45"));
    EXPECT_EQ(second_->text(), "245");
    second_->resignFirstResponder();
    EXPECT_THAT(person_.typeOnKeyboard("6").error(), HasSubstr("No field has the keyboard"));
}

TEST_F(PersonTest, CannotTapWhatIsOutOfReachAndSaysWhatIsThereInstead) {
    const auto overlay = std::make_shared<View>();
    EXPECT_THAT(person_.tap("backButton").error(),
                testing::AllOf(HasSubstr("There is no \"backButton\"; the screen shows: "),
                               HasSubstr("\"Enter your code\""), HasSubstr("button nextButton \"Next\"")));
    const std::vector<std::pair<std::string, std::function<void()>>> obstacles{
        {"is hidden", [&] { next_->setHidden(true); }},
        {"is disabled", [&] { next_->setEnabled(false); }},
        {"is covered by \"overlay\"", [&] { add(overlay, "overlay", {.top = 0, .left = 0, .bottom = 0, .right = 0}); }},
    };
    for (const auto& [problem, obstruct] : obstacles) {
        obstruct();
        const auto outcome = person_.tap("nextButton");
        ASSERT_FALSE(outcome) << problem;
        EXPECT_THAT(outcome.error(), HasSubstr(problem));
        next_->setHidden(false);
        next_->setEnabled(true);
    }
    EXPECT_EQ(taps_, 0);
    overlay->removeFromSuperview();
    EXPECT_TRUE(person_.tap("nextButton"));
    EXPECT_EQ(taps_, 1);
}

TEST_F(PersonTest, AnswersAlertsAndPressesBarButtons) {
    std::string answer;
    const auto ask = [&] {
        const auto alert = std::make_shared<AlertController>("", "Leave?");
        alert->addAction({.title = "OK", .handler = [&] { answer = "OK"; }});
        screen_->present(alert, true);
    };
    screen_->navigationItem()->setRightBarButtonItem(BarButtonItem{.title = "Close", .action = ask});
    EXPECT_FALSE(person_.chooseInAlert("OK"));
    EXPECT_TRUE(person_.pressBarButton("Close"));
    EXPECT_TRUE(person_.sees("Leave?"));
    EXPECT_THAT(person_.tap("nextButton").error(), HasSubstr("There is no"));
    EXPECT_FALSE(person_.chooseInAlert("Perhaps"));
    EXPECT_TRUE(person_.chooseInAlert("OK"));
    EXPECT_EQ(answer, "OK");
    EXPECT_TRUE(person_.sees("Enter your"));
}

} // namespace
} // namespace kivo::simulator
