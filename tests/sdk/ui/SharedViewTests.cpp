#include "Configuration/theme/ReadingSize.hpp"
#include "support/HostScreenFixture.hpp"
#include "ui/Closing.hpp"
#include "ui/Overlays.hpp"
#include "ui/TextEntry.hpp"

#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/ui/LayerStyle.hpp>

#include <algorithm>
#include <functional>
#include <vector>

namespace kivo {
namespace {

using namespace std::chrono_literals;
using platform::AlertController;
using platform::Color;
using platform::ContentSizeCategory;
using platform::TextField;
using platform::View;
using platform::ViewController;

using SharedViews = test::HostScreenFixture;

TEST_F(SharedViews, FieldsTakePaddingAPlaceholdersColourAndLetterSpace) {
    TextField field;
    EXPECT_EQ(ui::paddingLeftCustom(field), 0);
    field.setFrame({.origin = {}, .size = {.width = 200, .height = 44}});
    ui::setPaddingLeftCustom(field, 12);
    ui::setPaddingRightCustom(field, 8);
    EXPECT_EQ(ui::paddingLeftCustom(field), 12);
    EXPECT_EQ(ui::paddingRightCustom(field), 8);
    EXPECT_EQ(field.leftView()->frame().size.height, 44) << "as high as the field";

    ui::setPlaceHolderColor(field, std::nullopt);
    EXPECT_FALSE(field.attributedPlaceholder());
    EXPECT_EQ(ui::placeHolderColor(field), std::nullopt);
    field.setPlaceholder("Code");
    ui::setPlaceHolderColor(field, Color::white(0.5));
    EXPECT_EQ(ui::placeHolderColor(field), Color::white(0.5));
    EXPECT_EQ(field.placeholder(), "Code");
    field.setPlaceholder("Name");
    EXPECT_FALSE(field.attributedPlaceholder()) << "a plain text drops the colour";

    EXPECT_EQ(ui::letterSpace(field), 0);
    field.setText("123");
    ui::setLetterSpace(field, 8);
    EXPECT_EQ(ui::letterSpace(field), 8);
    EXPECT_EQ(field.text(), "123");
    field.setAttributedText(platform::AttributedText{.text = "4", .foregroundColor = Color::black()});
    ui::setLetterSpace(field, 2);
    EXPECT_EQ(field.attributedText(),
              (platform::AttributedText{.text = "4", .foregroundColor = Color::black(), .kern = 2}));
    field.setText("");
    ui::setLetterSpace(field, 2);
    EXPECT_EQ(ui::letterSpace(field), 0) << "there is no character to be spaced";
}

TEST_F(SharedViews, TheCloseBarButtonAsksBeforeItCloses) {
    addColor("Kivo.PrimaryColor", Color::white(0.25));
    const auto screen = std::make_shared<ViewController>();
    push(screen);
    ui::setUpCloseBarButton(*screen);
    EXPECT_EQ(navigation->navigationBar()->tintColor(), Color::white(0.25));
    const auto item = screen->navigationItem()->rightBarButtonItem();
    ASSERT_TRUE(item);
    EXPECT_EQ(item->style, platform::BarButtonItem::Style::plain);
    EXPECT_EQ(navigation->navigationBar()->find("rightBarButton")->accessibilityLabel(), "Close");

    for (const auto& [answer, stays] : {std::pair{1, true}, std::pair{0, false}}) {
        item->action();
        settle();
        ASSERT_NE(alert(), nullptr);
        EXPECT_EQ(alert()->title(), "");
        EXPECT_EQ(alert()->message(), "Are you sure, you want to terminate the process?");
        ASSERT_EQ(alert()->actions().size(), 2U);
        EXPECT_EQ(alert()->actions()[0].title, "OK");
        EXPECT_EQ(alert()->actions()[1].title, "Cancel");
        alert()->choose(static_cast<std::size_t>(answer));
        settle();
        EXPECT_EQ(navigation->topViewController() == screen, stays);
    }
}

TEST_F(SharedViews, TheKeyboardLiftsAScreenOnceAndSetsItBack) {
    const auto center = platform::NotificationCenter::defaultCenter();
    const auto post = [&](std::string_view name, double height) {
        const platform::KeyboardFrame frame{.begin = platform::Rect{.size = {.width = 390, .height = height}}};
        center->post({.name = std::string{name}, .object = height > 0 ? frame : platform::KeyboardFrame{}});
    };
    const auto y = [&] { return host->view()->frame().origin.y; };
    ui::KeyboardAvoidance avoidance{*host};
    post(platform::keyboardWillShow, 0);
    EXPECT_EQ(y(), 0) << "without a frame nothing moves";
    post(platform::keyboardWillShow, 300);
    EXPECT_EQ(y(), -150);
    post(platform::keyboardWillShow, 200);
    EXPECT_EQ(y(), -150) << "a lifted screen stays where it is";
    post(platform::keyboardWillHide, 0);
    EXPECT_EQ(y(), 0);
    avoidance.unsubscribeFromKeyboardNotifications();
    post(platform::keyboardWillShow, 300);
    EXPECT_EQ(y(), 0);
}

TEST_F(SharedViews, ChildScreensTakeTheReadingSizeOfTheDeviceWhenTheirScreenIsAboutToAppear) {
    struct Parent final : ViewController {
        void viewWillAppear(bool /*animated*/) override { ui::overrideChildrenContentSizeCategories(*this); }
    };

    const auto child = std::make_shared<ViewController>();
    const auto parent = std::make_shared<Parent>();
    parent->addChild(child);
    parent->view()->addSubview(child->view());
    window->setPreferredContentSizeCategory(ContentSizeCategory::extraSmall);
    push(parent);
    window->setPreferredContentSizeCategory(ContentSizeCategory::medium);
    EXPECT_EQ(child->view()->contentSizeCategory(), ContentSizeCategory::extraSmall);
}

TEST_F(SharedViews, OneOverlayCoversTheNavigationControllerUntilItHasFaded) {
    const auto overlays = [&] {
        return std::ranges::count_if(navigation->view()->subviews(),
                                     [](const auto& view) { return view->tag() == ui::activityOverlayTag; });
    };
    ui::showActivityOverlay(*host);
    ui::showActivityOverlay(*host);
    EXPECT_EQ(overlays(), 0) << "only on the main queue";
    settle();
    EXPECT_EQ(overlays(), 1);
    const auto overlay = navigation->view()->viewWithTag(ui::activityOverlayTag);
    EXPECT_EQ(overlay->backgroundColor(), Color::white(120.0 / 255));
    EXPECT_EQ(overlay->alpha(), 0.5);
    navigation->view()->layoutIfNeeded();
    EXPECT_EQ(overlay->frame().size, navigation->view()->frame().size);
    const auto wheel = std::dynamic_pointer_cast<platform::ActivityIndicatorView>(overlay->subviews().at(0));
    ASSERT_NE(wheel, nullptr);
    EXPECT_TRUE(wheel->isAnimating());
    EXPECT_EQ(wheel->style(), platform::ActivityIndicatorView::Style::large);

    const auto question = std::make_shared<AlertController>("", "Wait");
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"push", [&] { cover(); }},
        {"alert", [&] { navigation->present(question, true); }},
        {"answer", [&] { question->dismiss(true); }},
        {"turned display", [&] { window->setSize({.width = 844, .height = 390}); }},
        {"pop", [&] { pop(); }},
    };
    for (const auto& [what, change] : changes) {
        change();
        settle();
        EXPECT_EQ(navigation->view()->subviews().back(), overlay) << what;
        EXPECT_EQ(overlay->frame().size, window->frame().size) << what;
    }
    EXPECT_EQ(window->hitTest({.x = 100, .y = 100}), wheel->superview());
    const auto banner = std::make_shared<View>();
    banner->setPlacement({.top = 0, .left = 0, .width = 50, .height = 50});
    window->addSubview(banner);
    cover();
    EXPECT_EQ(banner->window(), window) << "what the host lays over everything stays, too";
    EXPECT_EQ(window->hitTest({.x = 10, .y = 10}), banner);
    EXPECT_EQ(window->hitTest({.x = 100, .y = 100}), overlay);
    pop();

    ui::hideActivityOverlay(*host);
    settle();
    ui::showActivityOverlay(*host);
    settle();
    advance(200ms);
    EXPECT_EQ(overlays(), 1) << "shown again while it faded";
    const auto last = navigation->view()->viewWithTag(ui::activityOverlayTag);
    ui::hideActivityOverlay(*host);
    settle();
    EXPECT_EQ(last->alpha(), 0);
    EXPECT_EQ(overlays(), 1);
    advance(200ms);
    EXPECT_EQ(overlays(), 0);
}

} // namespace
} // namespace kivo
