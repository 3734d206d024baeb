#include "ui/Leaving.hpp"

#include <kivo/platform/ui/NavigationController.hpp>

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

} // namespace kivo::ui
