#include "ui/Closing.hpp"

#include "ui/Overlays.hpp"

#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/LocalizedText.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/NavigationItem.hpp>

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

void setUpCloseBarButton(platform::ViewController& screen) {
    screen.navigationItem()->setRightBarButtonItem(
        platform::BarButtonItem{.image = platform::Image::named("close-icon"),
                                .action =
                                    [weak = screen.weak_from_this()] {
                                        if (const auto self = weak.lock()) {
                                            onCloseButtonAlertClick(*self);
                                        }
                                    },
                                .accessibilityLabel = platform::localizedText("Close")});
    const auto navigation = screen.navigationController();
    const auto tint = platform::Color::named("Kivo.PrimaryColor");
    if (navigation && tint) {
        navigation->navigationBar()->setTintColor(tint);
    }
}

void onCloseButtonAlertClick(platform::ViewController& screen) {
    constexpr std::size_t ok = 0;
    showAlert(screen, "", platform::localizedText("Are you sure, you want to terminate the process?"),
              {platform::localizedText("OK"), platform::localizedText("Cancel")},
              [weak = screen.weak_from_this()](std::size_t index) {
                  const auto self = weak.lock();
                  const auto navigation = self ? self->navigationController() : nullptr;
                  if (index == ok && navigation) {
                      navigation->popViewController(/*animated=*/true);
                  }
              });
}

} // namespace kivo::ui
