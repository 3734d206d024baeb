#include "ui/Overlays.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/AlertController.hpp>
#include <kivo/platform/ui/NavigationController.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace kivo::ui {
namespace {

using namespace std::chrono_literals;
using platform::View;
using platform::ViewController;

/// The screen whose view the overlay covers.
std::shared_ptr<ViewController> coveredScreen(ViewController& screen) {
    const auto navigation = screen.navigationController();
    return navigation ? navigation : screen.shared_from_this();
}

std::shared_ptr<View> makeOverlay() {
    auto overlay = std::make_shared<View>();
    overlay->setTag(activityOverlayTag);
    overlay->setBackgroundColor(platform::Color::white(120.0 / 255));
    overlay->setAlpha(0.5);
    overlay->changeAccessibility([](platform::Accessibility& accessibility) { accessibility.isModal = true; });
    overlay->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0, .ignoresSafeArea = true});

    const auto indicator =
        std::make_shared<platform::ActivityIndicatorView>(platform::ActivityIndicatorView::Style::large);
    indicator->setColor(platform::Color::white());
    indicator->setPlacement({.centerX = 0, .centerY = 0});
    indicator->startAnimating();
    overlay->addSubview(indicator);
    return overlay;
}

/// Runs `work` with the covered view. The view is found before, because the screen may be popped before `work` runs.
void onMainQueue(ViewController& under, const std::function<void(View&)>& work) {
    platform::services().mainQueue->async([weak = std::weak_ptr{under.view()}, work] {
        if (const auto covered = weak.lock()) {
            work(*covered);
        }
    });
}

} // namespace

void showActivityOverlay(ViewController& screen) {
    onMainQueue(*coveredScreen(screen), [](View& covered) {
        auto former = covered.viewWithTag(activityOverlayTag);
        if (former && former->alpha() == 0) {
            // The former overlay fades out, and its removal must not remove the new overlay.
            former->removeFromSuperview();
            former = nullptr;
        }
        if (!former) {
            covered.addSubview(makeOverlay());
        }
    });
}

void hideActivityOverlay(ViewController& screen) {
    const auto under = coveredScreen(screen);
    if (!under->isViewLoaded()) {
        return;
    }
    onMainQueue(*under, [](View& covered) {
        const auto overlay = covered.viewWithTag(activityOverlayTag);
        if (!overlay) {
            return;
        }
        overlay->setAlpha(0);
        platform::services().mainQueue->asyncAfter(200ms, [overlay] { overlay->removeFromSuperview(); });
    });
}

void showAlert(platform::ViewController& screen, std::string title, std::string message,
               const std::vector<std::string>& actions, const std::function<void(std::size_t)>& handler) {
    const auto alert = std::make_shared<platform::AlertController>(std::move(title), std::move(message));
    for (std::size_t index = 0; index < actions.size(); ++index) {
        alert->addAction({.title = actions[index], .handler = [handler, index] { handler(index); }});
    }
    screen.present(alert, /*animated=*/true);
}

} // namespace kivo::ui
