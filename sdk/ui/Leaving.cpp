#include "ui/Leaving.hpp"

#include <kivo/platform/ui/NavigationController.hpp>

#include <memory>
#include <utility>

namespace kivo::ui {

bool popOrDismiss(platform::ViewController& screen, std::function<void()> left, bool animated) {
    const auto navigation = screen.navigationController();
    if (!navigation) {
        const bool leaves = screen.presentingViewController() != nullptr;
        screen.dismissAlone(animated, std::move(left));
        return leaves;
    }
    auto entry = screen.shared_from_this();
    while (entry->parent() != navigation) {
        entry = entry->parent();
    }
    bool leaves = true;
    if (navigation->topViewController() == entry) {
        leaves = navigation->popViewController(animated) != nullptr;
    } else {
        entry->removeFromParent();
    }
    if (left) {
        left();
    }
    return leaves;
}

} // namespace kivo::ui
