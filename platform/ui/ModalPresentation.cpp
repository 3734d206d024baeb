// Screens over screens. Each holds the one over it, and knows weakly the one below.
#include "platform/ui/ViewControllerState.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <utility>

namespace kivo::platform {
namespace {

void finish(std::function<void()> completion) {
    if (completion) {
        services().mainQueue->async(std::move(completion));
    }
}

} // namespace

void ViewController::present(const std::shared_ptr<ViewController>& viewController, bool animated,
                             std::function<void()> completion) {
    if (const auto container = parent()) {
        container->present(viewController, animated, std::move(completion));
        return;
    }
    if (const auto above = state_->presented; above && viewController != above) {
        above->present(viewController, animated, std::move(completion));
        return;
    }
    const auto window = windowOfScreen();
    const auto* const problem = !viewController                               ? "there is no screen to present"
                                : !window                                     ? "the presenting screen is in no window"
                                : viewController->parent()                    ? "the screen is part of another one"
                                : viewController->windowOfScreen() != nullptr ? "the screen is on display already"
                                                                              : nullptr;
    if (problem) {
        services().diagnostics->report("screens", std::string{"A screen was not presented: "} + problem + ".");
        finish(std::move(completion));
        return;
    }
    window->endEditing();
    state_->presented = viewController;
    viewController->state_->presenting = weak_from_this();
    window->updateScreens(animated, std::move(completion));
}

void ViewController::dismiss(bool animated, std::function<void()> completion) {
    if (const auto container = parent()) {
        container->dismiss(animated, std::move(completion));
        return;
    }
    const auto self = shared_from_this();
    const auto leaving = state_->presented ? state_->presented : self;
    const auto presenter = leaving->state_->presenting.lock();
    if (!presenter || presenter->state_->presented != leaving) {
        finish(std::move(completion));
        return;
    }
    const auto window = presenter->windowOfScreen();
    presenter->state_->presented.reset();
    if (window) {
        window->updateScreens(animated, std::move(completion));
    } else {
        finish(std::move(completion));
    }
    leaving->forgetPresentation();
}

void ViewController::dismissAlone(bool animated, std::function<void()> completion) {
    if (const auto container = parent()) {
        container->dismissAlone(animated, std::move(completion));
        return;
    }
    const auto self = shared_from_this();
    const auto above = state_->presented;
    if (!above) {
        dismiss(animated, std::move(completion));
        return;
    }
    const auto presenter = state_->presenting.lock();
    if (!presenter || presenter->state_->presented != self) {
        finish(std::move(completion));
        return;
    }
    presenter->state_->presented = above;
    above->state_->presenting = presenter;
    state_->presented.reset();
    state_->presenting.reset();
    if (const auto window = presenter->windowOfScreen()) {
        window->updateScreens(animated, std::move(completion));
    } else {
        finish(std::move(completion));
    }
}

void ViewController::forgetPresentation() {
    state_->presenting.reset();
    if (const auto above = std::exchange(state_->presented, nullptr)) {
        above->forgetPresentation();
    }
}

std::shared_ptr<ViewController> ViewController::presentedViewController() const {
    const auto container = parent();
    return container ? container->presentedViewController() : state_->presented;
}

std::shared_ptr<ViewController> ViewController::presentingViewController() const {
    const auto container = parent();
    return container ? container->presentingViewController() : state_->presenting.lock();
}

} // namespace kivo::platform
