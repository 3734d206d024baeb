#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace kivo::platform {
namespace {

struct ToldScreen final : ViewController {
    void traitCollectionDidChange() override { ++changes; }

    int changes = 0;
};

struct Painter final : WindowObserver {
    void viewDidChange(View& view) override { changed.push_back(view.identifier()); }

    std::vector<std::string> changed;
};

class Traits : public test::ScreenFixture {
protected:
    Traits() {
        window_->setSafeArea({});
        window_->setRootViewController(screen_);
    }

    std::shared_ptr<View> added(const std::string& name, const Placement& placement) {
        auto view = std::make_shared<View>();
        view->setIdentifier(name);
        view->setPlacement(placement);
        screen_->view()->addSubview(view);
        return view;
    }

    std::shared_ptr<ToldScreen> screen_ = std::make_shared<ToldScreen>();
};

TEST_F(Traits, AChangeOfAppearanceReachesEveryViewThatIsShownAndItsScreen) {
    const auto view = added("view", {});
    const auto camera = added("camera", {});
    camera->overrideUserInterfaceStyle(UserInterfaceStyle::dark);
    const auto over = std::make_shared<ToldScreen>();
    screen_->present(over, /*animated=*/false);
    settle();
    const auto painter = std::make_shared<Painter>();
    window_->setObserver(painter);
    const auto color = Color::adaptive(Color::white(), Color::white(0.1, 0.5));
    EXPECT_EQ(color.in(view->userInterfaceStyle()), Color::white());

    window_->setUserInterfaceStyle(UserInterfaceStyle::dark);
    EXPECT_THAT(painter->changed, testing::Contains("view"));
    EXPECT_EQ(screen_->changes, 1);
    EXPECT_EQ(over->changes, 1);
    EXPECT_EQ(color.in(view->userInterfaceStyle()), Color::white(0.1, 0.5));
    EXPECT_EQ(Color::black().in(view->userInterfaceStyle()), Color::black());

    window_->setUserInterfaceStyle(UserInterfaceStyle::dark);
    EXPECT_EQ(screen_->changes, 1);
    window_->setUserInterfaceStyle(UserInterfaceStyle::light);
    EXPECT_EQ(view->userInterfaceStyle(), UserInterfaceStyle::light);
    EXPECT_EQ(camera->userInterfaceStyle(), UserInterfaceStyle::dark);
}

TEST_F(Traits, ALanguageFromTheRightMirrorsWhatBeginsAndEnds) {
    const struct {
        Placement placement;
        double x, mirroredX;
    } rows[] = {
        {{.leading = 10, .width = 100, .height = 1}, 10, 280},
        {{.trailing = 10, .width = 100, .height = 1}, 280, 10},
        {{.left = 10, .width = 100, .height = 1}, 10, 10},
        {{.left = 30, .leading = 10, .width = 100, .height = 1}, 30, 30},
        {{.leading = 20, .trailing = 90, .height = 1}, 20, 90},
        {{.leading = 20, .trailing = 0, .height = 1, .maximumWidth = 100}, 155, 135},
    };

    for (const auto& row : rows) {
        const auto view = added("view", row.placement);
        for (const auto& [direction, x] :
             {std::pair{LayoutDirection::leftToRight, row.x}, std::pair{LayoutDirection::rightToLeft, row.mirroredX}}) {
            window_->setLayoutDirection(direction);
            window_->layoutIfNeeded();
            EXPECT_EQ(view->frame().left(), x);
        }
        view->removeFromSuperview();
    }
}

TEST_F(Traits, ARowRunsInTheDirectionOfItsLanguageAndACodeFromTheLeft) {
    const auto row = std::make_shared<StackView>();
    row->setAxis(StackView::Axis::horizontal);
    row->setSpacing(10);
    row->setPlacement({.top = 0, .left = 0, .width = 200, .height = 20});
    for (const double width : {30, 50}) {
        const auto view = std::make_shared<View>();
        view->setPlacement({.width = width});
        row->addSubview(view);
    }
    const auto rest = std::make_shared<View>();
    rest->setPlacement({.grows = true});
    row->insertSubview(rest, 1);
    screen_->view()->addSubview(row);
    const auto places = [&] {
        window_->layoutIfNeeded();
        std::vector<double> all;
        for (const auto& view : row->subviews()) {
            all.push_back(view->frame().left());
        }
        return all;
    };
    EXPECT_THAT(places(), testing::ElementsAre(0, 40, 150));
    window_->setLayoutDirection(LayoutDirection::rightToLeft);
    EXPECT_THAT(places(), testing::ElementsAre(170, 60, 0));
    row->overrideLayoutDirection(LayoutDirection::leftToRight);
    EXPECT_THAT(places(), testing::ElementsAre(0, 40, 150));
    for (const auto& [language, direction] :
         {std::pair{"ar", LayoutDirection::rightToLeft}, std::pair{"he_IL", LayoutDirection::rightToLeft},
          std::pair{"arn", LayoutDirection::leftToRight}, std::pair{"", LayoutDirection::leftToRight}}) {
        EXPECT_EQ(layoutDirectionOf(language), direction) << language;
    }
}

TEST_F(Traits, AHeightThatIsAPartOfTheDisplaysFollowsIt) {
    const auto view = added("view", {.top = 0, .left = 0, .shareOfDisplay = 0.25});
    const auto inner = std::make_shared<View>();
    inner->setPlacement({.width = 10, .height = 200});
    view->addSubview(inner);
    for (const auto& [height, expected] : {std::pair{1200.0, 200.0}, std::pair{700.0, 100.0}, std::pair{200.0, 0.0}}) {
        window_->setSize({300, height});
        EXPECT_EQ(view->frame().size.height, expected);
    }
}

TEST_F(Traits, ASmallControlTakesTheTouchesOfAFingerBesideIt) {
    const auto button = [&](double x) {
        auto made = std::make_shared<Button>();
        made->setPlacement({.top = 100, .left = x, .width = 20, .height = 20});
        screen_->view()->addSubview(made);
        return made;
    };
    const auto first = button(100);
    const auto second = button(130);
    const std::pair<Point, std::shared_ptr<View>> rows[] = {
        {{110, 110}, first},  {{89, 110}, first},           {{110, 131}, first},
        {{121, 110}, second}, {{87, 110}, screen_->view()}, {{110, 133}, screen_->view()},
        {{119, 110}, first},
    };
    for (const auto& [point, expected] : rows) {
        EXPECT_EQ(window_->hitTest(point), expected) << point.x << ", " << point.y;
    }
    const auto cover = added("cover", {.top = 0, .left = 0, .bottom = 0, .right = 0});
    EXPECT_EQ(window_->hitTest({89, 110}), cover);
}

} // namespace
} // namespace kivo::platform
