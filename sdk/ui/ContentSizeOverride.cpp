#include "ui/ContentSizeOverride.hpp"

#include <kivo/platform/ui/Window.hpp>

namespace kivo::ui {

void overrideChildrenContentSizeCategories(platform::ViewController& screen) {
    const auto window = screen.windowOfScreen();
    if (!window) {
        return;
    }
    for (const auto& child : screen.children()) {
        child->overrideContentSizeCategory(window->preferredContentSizeCategory());
    }
}

} // namespace kivo::ui
