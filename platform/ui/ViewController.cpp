#include "platform/ui/ViewControllerState.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>
#include <kivo/platform/ui/ViewController.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <utility>

namespace kivo::platform {

ViewController::ViewController()
    : state_{std::make_unique<State>()} {}

ViewController::~ViewController() {
    for (const auto& child : state_->children) {
        child->state_->parent = nullptr;
    }
}

const std::shared_ptr<View>& ViewController::view() {
    if (!view_) {
        view_ = loadView();
        if (!view_) {
            view_ = std::make_shared<View>();
        }
        view_->screen_ = weak_from_this();
        if (state_->contentSizeOverride) {
            view_->setContentSizeOverride(state_->contentSizeOverride);
        }
        arrangeViews();
        viewDidLoad();
    }
    return view_;
}

std::shared_ptr<View> ViewController::loadView() {
    return std::move(state_->storyboardView);
}

std::shared_ptr<NavigationController> ViewController::navigationController() {
    const auto container = parent();
    if (!container) {
        return nullptr;
    }
    const auto navigation = std::dynamic_pointer_cast<NavigationController>(container);
    return navigation ? navigation : container->navigationController();
}

std::shared_ptr<ViewController> ViewController::parent() const {
    return state_->parent ? state_->parent->weak_from_this().lock() : nullptr;
}

const std::vector<std::shared_ptr<ViewController>>& ViewController::children() const {
    return state_->children;
}

void ViewController::addChild(const std::shared_ptr<ViewController>& child) {
    if (!child || child.get() == this || child->parent().get() == this) {
        return;
    }
    child->removeFromParent();
    child->state_->parent = this;
    state_->children.push_back(child);
    if (const auto window = windowOfScreen()) {
        window->updateScreens(false);
    }
}

void ViewController::removeFromParent() {
    const auto container = parent();
    if (!container) {
        return;
    }
    const auto self = shared_from_this();
    std::erase(container->state_->children, self);
    if (const auto window = container->windowOfScreen()) {
        window->updateScreens(false);
    } else if (container->isViewLoaded()) {
        container->arrangeViews();
    }
    leaveParent();
}

void ViewController::leaveParent() {
    // Until here a screen on its way out may ask where it was.
    willMoveFromParent();
    state_->parent = nullptr;
}

std::vector<std::shared_ptr<ViewController>> ViewController::shownChildren() const {
    std::vector<std::shared_ptr<ViewController>> shown;
    for (const auto& child : state_->children) {
        if (view_ && child->view_ && child->view_->isDescendantOf(*view_)) {
            shown.push_back(child);
        }
    }
    return shown;
}

const std::shared_ptr<NavigationItem>& ViewController::navigationItem() {
    if (!state_->navigationItem) {
        state_->navigationItem = std::make_shared<NavigationItem>();
    }
    return state_->navigationItem;
}

std::shared_ptr<Window> ViewController::windowOfScreen() const {
    if (const auto container = parent()) {
        return container->windowOfScreen();
    }
    if (const auto presenter = state_->presenting.lock()) {
        return presenter->windowOfScreen();
    }
    return state_->window.lock();
}

void ViewController::setNeedsStatusBarAppearanceUpdate() {
    if (const auto window = windowOfScreen()) {
        if (const auto observer = window->observer_.lock()) {
            observer->statusBarAppearanceDidChange();
        }
    }
}

void ViewController::overrideContentSizeCategory(std::optional<ContentSizeCategory> category) {
    if (std::exchange(state_->contentSizeOverride, category) == category || !view_) {
        return;
    }
    view_->setContentSizeOverride(category);
    tellTraitChange();
}

void ViewController::tellTraitChange() {
    const auto self = shared_from_this();
    if (view_) {
        traitCollectionDidChange();
    }
    const auto children = state_->children;
    for (const auto& child : children) {
        child->tellTraitChange();
    }
}

} // namespace kivo::platform
