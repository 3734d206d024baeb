#include "ui/Leaving.hpp"

#include <kivo/platform/ui/NavigationController.hpp>

#include <algorithm>
#include <utility>

namespace kivo::ui {

void popOrDismiss(platform::ViewController& screen, std::function<void()> left) {
    const auto navigation = screen.navigationController();
    if (!navigation) {
        screen.dismiss(/*animated=*/true, std::move(left));
        return;
    }
    navigation->popViewController(/*animated=*/true);
    if (left) {
        left();
    }
}

bool isLeavingStack(platform::ViewController& screen) {
    const auto navigation = screen.navigationController();
    return navigation &&
           std::ranges::none_of(navigation->children(), [&](const auto& child) { return child.get() == &screen; });
}

} // namespace kivo::ui
