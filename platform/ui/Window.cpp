#include "platform/ui/ViewControllerState.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Control.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <algorithm>
#include <ranges>
#include <utility>

namespace kivo::platform {
namespace {

using Screens = std::vector<std::shared_ptr<ViewController>>;

bool contains(const Screens& screens, const std::shared_ptr<ViewController>& screen) {
    return std::ranges::find(screens, screen) != screens.end();
}

/// The first of `screens` that is not among `others`; null when there is none.
std::shared_ptr<ViewController> firstMissing(const Screens& screens, const Screens& others) {
    const auto found = std::ranges::find_if(screens, [&](const auto& screen) { return !contains(others, screen); });
    return found == screens.end() ? nullptr : *found;
}

std::shared_ptr<View> viewAt(Point point, const std::shared_ptr<View>& view) {
    if (view->isHidden() || view->alpha() == 0 || !view->isUserInteractionEnabled() || !view->frame().contains(point)) {
        return nullptr;
    }
    const Point inside{point.x - view->frame().left(), point.y - view->frame().top()};
    for (const auto& subview : std::views::reverse(view->subviews())) {
        if (auto found = viewAt(inside, subview)) {
            return found;
        }
    }
    return view->passesTouches() ? nullptr : view;
}

/// The topmost control of the view near that point, in the coordinates of its superview. A control that is smaller than
/// a finger takes touches beside it, too.
std::shared_ptr<View> controlNear(Point point, const std::shared_ptr<View>& view) {
    if (view->isHidden() || view->alpha() == 0 || !view->isUserInteractionEnabled()) {
        return nullptr;
    }
    constexpr double finger = 44;
    const auto& frame = view->frame();
    const Point inside{point.x - frame.left(), point.y - frame.top()};
    for (const auto& subview : std::views::reverse(view->subviews())) {
        if (auto found = controlNear(inside, subview)) {
            return found;
        }
    }
    const auto beside = std::max(finger - frame.size.width, 0.0) / 2;
    const auto above = std::max(finger - frame.size.height, 0.0) / 2;
    const EdgeInsets reach{.top = -above, .left = -beside, .bottom = -above, .right = -beside};
    return dynamic_cast<const Control*>(view.get()) != nullptr && inset(frame, reach).contains(point) ? view : nullptr;
}

} // namespace

Window::Window(Size size) {
    setFrame({.origin = {}, .size = size});
    setContentSizeOverride(ContentSizeCategory::large);
}

void Window::setRootViewController(std::shared_ptr<ViewController> root) {
    if (root == root_) {
        return;
    }
    const auto former = std::exchange(root_, std::move(root));
    if (root_) {
        root_->state_->window = std::static_pointer_cast<Window>(shared_from_this());
    }
    updateScreens(false);
    if (former) {
        former->state_->window.reset();
        former->forgetPresentation();
    }
}

std::shared_ptr<ViewController> Window::visibleViewController() const {
    auto screen = root_;
    while (screen && screen->state_->presented) {
        screen = screen->state_->presented;
    }
    while (const auto navigation = std::dynamic_pointer_cast<NavigationController>(screen)) {
        if (!navigation->topViewController()) {
            break;
        }
        screen = navigation->topViewController();
    }
    return screen;
}

void Window::setSize(Size size) {
    if (size != frame().size) {
        // Some heights are a part of the display's.
        setNeedsLayoutOfTree();
    }
    setFrame({.origin = {}, .size = size});
    layoutIfNeeded();
}

void Window::setSafeArea(const EdgeInsets& insets) {
    safeArea_ = insets;
    arrangeViews();
    layoutIfNeeded();
}

void Window::setPreferredContentSizeCategory(ContentSizeCategory category) {
    if (category == preferredContentSizeCategory()) {
        return;
    }
    setContentSizeOverride(category);
    tellTraitChange();
}

void Window::setUserInterfaceStyle(UserInterfaceStyle style) {
    if (style == userInterfaceStyle()) {
        return;
    }
    overrideUserInterfaceStyle(style);
    tellTraitChange();
}

LayoutDirection Window::directionOfLanguage() const {
    // Every view asks at each layout, and the bundles answer slowly.
    if (!languageDirection_) {
        languageDirection_ = layoutDirectionOf(textLanguage());
    }
    return *languageDirection_;
}

void Window::setLayoutDirection(LayoutDirection direction) {
    overrideLayoutDirection(direction);
    layoutIfNeeded();
}

void Window::tellTraitChange() {
    for (auto screen = root_; screen; screen = screen->state_->presented) {
        screen->tellTraitChange();
    }
    layoutIfNeeded();
}

std::shared_ptr<View> Window::hitTest(Point point) {
    layoutIfNeeded();
    for (const auto& view : reachableViews() | std::views::reverse) {
        if (auto found = viewAt(point, view)) {
            const bool isControl = dynamic_cast<const Control*>(found.get()) != nullptr;
            const auto place = found->frameOnScreen();
            const Point beside{point.x - place.left() + found->frame().left(),
                               point.y - place.top() + found->frame().top()};
            auto control = isControl ? nullptr : controlNear(beside, found);
            return control ? control : found;
        }
    }
    return nullptr;
}

std::vector<std::shared_ptr<View>> Window::reachableViews() const {
    const auto views = subviewsInReach();
    return {views.begin(), views.end()};
}

std::span<const std::shared_ptr<View>> Window::subviewsInReach() const {
    const auto top = screenViews_.empty() ? subviews().begin() : std::ranges::find(subviews(), screenViews_.back());
    return {top, subviews().end()};
}

void Window::layoutSubviews() {
    const auto subviews = this->subviews();
    for (const auto& subview : subviews) {
        if (std::ranges::find(screenViews_, subview) == screenViews_.end()) {
            placeInScreen(*subview);
        } else if (subview->frame().size != frame().size) {
            // A screen may have moved its view aside for the keyboard. The view then stays until the display's size
            // changes.
            subview->setFrame(bounds());
        }
    }
}

Window::Screens Window::stackedScreens() const {
    Screens stack;
    for (auto screen = root_; screen; screen = screen->state_->presented) {
        if (screen != root_ && screen->modalPresentationStyle() == ModalPresentationStyle::fullScreen) {
            stack.clear();
        }
        stack.push_back(screen);
    }
    return stack;
}

Window::Screens Window::screensToShow() const {
    auto screens = stackedScreens();
    for (std::size_t i = 0; i < screens.size(); ++i) {
        const auto children = screens[i]->shownChildren();
        screens.insert(screens.begin() + static_cast<std::ptrdiff_t>(i) + 1, children.begin(), children.end());
    }
    return screens;
}

void Window::updateScreens(bool animated, std::function<void()> completion) {
    using enum ViewController::Appearance;
    const auto self = shared_from_this();
    Screens leaving;
    Screens arriving;
    // A screen's own functions may move screens again, so every step reads the hierarchy of screens anew.
    for (;;) {
        auto wanted = screensToShow();
        const auto left = firstMissing(shown_, wanted);
        if (const auto edited = Keyboard::firstResponder(); left && edited && edited->isDescendantOf(*left->view())) {
            // Before the next screen is made, because one of its fields may take the keyboard.
            edited->resignFirstResponder();
            wanted = screensToShow();
        }
        const auto unloaded = std::ranges::find_if(wanted, [](const auto& screen) { return !screen->isViewLoaded(); });
        if (unloaded != wanted.end()) {
            (*unloaded)->view();
        } else if (const auto gone = firstMissing(shown_, wanted)) {
            std::erase(shown_, gone);
            leaving.push_back(gone);
            gone->state_->appearance = disappearing;
            gone->viewWillDisappear(animated);
        } else if (const auto come = firstMissing(wanted, shown_)) {
            shown_.push_back(come);
            arriving.push_back(come);
            come->state_->appearance = appearing;
            come->viewWillAppear(animated);
        } else {
            shown_ = std::move(wanted);
            break;
        }
    }
    arrangeViews();
    layoutIfNeeded();
    if (leaving.empty() && arriving.empty() && !completion) {
        return;
    }
    if (const auto observer = observer_.lock()) {
        observer->screenDidChange();
    }
    services().mainQueue->async(
        [animated, leaving = std::move(leaving), arriving = std::move(arriving), completion = std::move(completion)] {
            for (const auto& screen : arriving) {
                if (screen->state_->appearance == appearing) {
                    screen->state_->appearance = appeared;
                    screen->viewDidAppear(animated);
                }
            }
            for (const auto& screen : leaving) {
                if (screen->state_->appearance == disappearing) {
                    screen->state_->appearance = disappeared;
                    screen->viewDidDisappear(animated);
                }
            }
            if (completion) {
                completion();
            }
        });
}

void Window::arrangeViews() {
    // Removing a view may end an edit, whose delegate may change the screens again.
    isArrangementDue_ = true;
    if (std::exchange(isArranging_, true)) {
        return;
    }
    while (std::exchange(isArrangementDue_, false)) {
        arrangeViewsOnce();
    }
    isArranging_ = false;
}

void Window::arrangeViewsOnce() {
    const auto stack = stackedScreens();
    const auto isWanted = [&](const auto& view) {
        return std::ranges::any_of(stack, [&](const auto& screen) { return screen->view_ == view; });
    };
    const auto former = screenViews_;
    for (const auto& view : former) {
        if (view->superview().get() == this && !isWanted(view)) {
            view->removeFromSuperview();
        }
    }
    screenViews_.clear();
    for (const auto& screen : stack) {
        if (screen->view_) {
            screen->view_->setSafeAreaInsets(safeArea_);
            if (screen->view_->superview().get() != this) {
                insertSubview(screen->view_, screenViews_.size());
            }
            screenViews_.push_back(screen->view_);
        }
    }
    const auto shown = shown_;
    for (const auto& screen : shown) {
        screen->arrangeViews();
    }
}

} // namespace kivo::platform
