#include "ui/Leaving.hpp"

#include <kivo/platform/ui/NavigationController.hpp>

#include <memory>
#include <utility>

namespace kivo::ui {

void popOrDismiss(platform::ViewController& screen, std::function<void()> left, bool animated) {
    const auto navigation = screen.navigationController();
    if (!navigation) {
        screen.dismissAlone(animated, std::move(left));
        return;
    }
    auto entry = screen.shared_from_this();
    while (entry->parent() != navigation) {
        entry = entry->parent();
    }
    if (navigation->topViewController() == entry) {
        navigation->popViewController(animated);
    } else {
        entry->removeFromParent();
    }
    if (left) {
        left();
    }
}

} // namespace kivo::ui
