#include "platform/ui/ViewControllerState.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <algorithm>
#include <limits>
#include <utility>

namespace kivo::platform {
namespace {

constexpr double barHeight = 44;
constexpr double barMargin = 8;

/// The screen on top fills the whole view, and the bar lies over its upper edge. Any other subview belongs to the host
/// and is placed by its own placement.
class NavigationView final : public View {
public:
    explicit NavigationView(std::shared_ptr<View> bar)
        : bar_{std::move(bar)} {}

    /// Puts the screen's view below all other subviews, in place of the former screen's view.
    void show(const std::shared_ptr<View>& screenView) {
        const auto former = std::exchange(screenView_, screenView);
        if (former && former != screenView && former->superview().get() == this) {
            former->removeFromSuperview();
        }
        // The end of an edit in the former screen may have changed the screen again.
        if (screenView && screenView == screenView_ && screenView->superview().get() != this) {
            insertSubview(screenView, 0);
        }
    }

protected:
    void layoutSubviews() override {
        const auto subviews = this->subviews();
        for (const auto& subview : subviews) {
            if (subview == bar_) {
                bar_->setFrame({.origin = {}, .size = {frame().size.width, safeAreaInsets().top + barHeight}});
            } else if (subview != screenView_) {
                placeInScreen(*subview);
            } else if (subview->frame().size != frame().size) {
                subview->setFrame(bounds());
            }
        }
    }

private:
    std::shared_ptr<View> bar_;
    std::shared_ptr<View> screenView_;
};

std::shared_ptr<Button> barButton(std::string identifier, const BarButtonItem& item) {
    auto button = std::make_shared<Button>();
    button->setIdentifier(std::move(identifier));
    button->setTitle(item.title);
    button->setImage(item.image);
    const bool isNameless = item.accessibilityLabel.empty() && item.title.empty() && item.image;
    button->setAccessibilityLabel(isNameless ? item.image->name : item.accessibilityLabel);
    button->addAction(ControlEvent::touchUpInside, [action = item.action](const auto&) {
        if (action) {
            action();
        }
    });
    return button;
}

} // namespace

NavigationController::NavigationController(const std::shared_ptr<ViewController>& root) {
    if (root) {
        root->state_->parent = this;
        state_->children.push_back(root);
    }
}

std::shared_ptr<ViewController> NavigationController::topViewController() const {
    return children().empty() ? nullptr : children().back();
}

void NavigationController::pushViewController(const std::shared_ptr<ViewController>& viewController, bool animated) {
    if (!viewController || viewController.get() == this || viewController->parent()) {
        services().diagnostics->report("screens",
                                       "A screen was not pushed: the screen is missing, or is part of another screen.");
        return;
    }
    viewController->state_->parent = this;
    state_->children.push_back(viewController);
    showTop(animated);
}

std::shared_ptr<ViewController> NavigationController::popViewController(bool animated) {
    if (children().size() < 2) {
        return nullptr;
    }
    auto leaving = topViewController();
    popToViewController(children()[children().size() - 2], animated);
    return leaving;
}

void NavigationController::goBack() {
    if (const auto left = popViewController(/*animated=*/true)) {
        left->didGoBack();
    }
}

void NavigationController::popToViewController(const std::shared_ptr<ViewController>& viewController, bool animated) {
    auto& stack = state_->children;
    const auto found = std::ranges::find(stack, viewController);
    if (found == stack.end() || std::next(found) == stack.end()) {
        return;
    }
    const std::vector leaving(std::next(found), stack.end());
    stack.erase(std::next(found), stack.end());
    showTop(animated);
    for (const auto& screen : leaving) {
        screen->leaveParent();
    }
}

void NavigationController::showTop(bool animated) {
    const auto self = shared_from_this();
    if (const auto window = windowOfScreen()) {
        window->updateScreens(animated);
    } else {
        arrangeViews();
    }
}

const std::shared_ptr<View>& NavigationController::navigationBar() {
    if (!navigationBar_) {
        navigationBar_ = std::make_shared<View>();
        navigationBar_->setIdentifier("navigationBar");
        // The bar has a ground of its own: the screen under the bar may be as dark, or as light, as the bar's title.
        navigationBar_->setBackgroundColor(
            Color::adaptive(Color::white(1, 0.92), {15.0 / 255, 19.0 / 255, 24.0 / 255, 0.92}));
    }
    return navigationBar_;
}

void NavigationController::setNavigationBarColors(Color background, Color title) {
    titleColor_ = title;
    navigationBar()->setBackgroundColor(background);
    arrangeViews();
}

void NavigationController::setNavigationBarHidden(bool hidden) {
    isNavigationBarHidden_ = hidden;
    arrangeViews();
}

std::shared_ptr<View> NavigationController::loadView() {
    auto view = std::make_shared<NavigationView>(navigationBar());
    view->addSubview(navigationBar());
    return view;
}

std::vector<std::shared_ptr<ViewController>> NavigationController::shownChildren() const {
    return children().empty() ? std::vector<std::shared_ptr<ViewController>>{} : std::vector{children().back()};
}

void NavigationController::arrangeViews() {
    if (!isViewLoaded()) {
        return;
    }
    const auto top = topViewController();
    const auto screenView = top ? top->view_ : nullptr;
    navigationBar_->setHidden(isNavigationBarHidden_);
    if (screenView) {
        auto insets = view()->safeAreaInsets();
        insets.top += isNavigationBarHidden_ ? 0 : barHeight;
        screenView->setSafeAreaInsets(insets);
    }
    static_cast<NavigationView&>(*view()).show(screenView);
    if (screenView && topViewController() == top) {
        fillNavigationBar();
    }
}

void NavigationController::fillNavigationBar() {
    const auto top = topViewController();
    const auto& item = top->navigationItem();
    const std::weak_ptr weak{std::static_pointer_cast<NavigationController>(shared_from_this())};
    item->changed_ = [weak, shown = std::weak_ptr{top}] {
        const auto self = weak.lock();
        if (self && self->topViewController() == shown.lock()) {
            self->fillNavigationBar();
        }
    };
    for (const auto& view : std::exchange(barItems_, {})) {
        view->removeFromSuperview();
    }
    const auto add = [this](const std::shared_ptr<View>& view, Placement placement) {
        placement.bottom = 0;
        placement.height = barHeight;
        view->setPlacement(placement);
        navigationBar_->insertSubview(view, barItems_.size());
        barItems_.push_back(view);
    };
    const auto title = std::make_shared<Label>();
    title->setIdentifier("navigationTitle");
    title->setText(item->title());
    title->setTextColor(titleColor_);
    title->setTextAlignment(TextAlignment::center);
    title->setShrinksToWords(true);
    title->changeAccessibility([](Accessibility& accessibility) { accessibility.isHeading = true; });
    if (const auto& left = item->leftBarButtonItem()) {
        add(barButton("leftBarButton", *left), {.leading = barMargin});
    } else if (children().size() > 1) {
        add(barButton("backButton", {.title = localizedText("Back"),
                                     .action =
                                         [weak] {
                                             if (const auto self = weak.lock()) {
                                                 self->goBack();
                                             }
                                         }}),
            {.leading = barMargin});
    }
    if (const auto& right = item->rightBarButtonItem()) {
        add(barButton("rightBarButton", *right), {.trailing = barMargin});
    }
    // In the middle of the bar, beside the wider of the buttons.
    double widest = 0;
    for (const auto& button : barItems_) {
        widest = std::max(widest, button->fittingSize(std::numeric_limits<double>::max()).width);
    }
    add(title, {.leading = barMargin + widest, .trailing = barMargin + widest});
}

} // namespace kivo::platform
