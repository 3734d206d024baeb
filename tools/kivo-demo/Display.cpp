#include "Display.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <algorithm>
#include <array>
#include <chrono>

namespace demo {
namespace {

using namespace std::chrono_literals;

constexpr std::array boxes{"textFieldDigitOne",  "textFieldDigitTwo",  "textFieldDigitThree",
                           "textFieldDigitFour", "textFieldDigitFive", "textFieldDigitSix"};

} // namespace

Display::Display(bool boxesAreReset)
    : boxesAreReset_{boxesAreReset} {
    navigation_->navigationBar()->setTintColor(kivo::platform::Color::named("Kivo.PrimaryColor"));
    window_->setRootViewController(navigation_);
}

std::string Display::typeCode(std::string_view code) {
    if (boxesAreReset_) {
        if (const auto reset = person_.waitFor([this] { return boxesAreEmpty(); }, 1s); !reset) {
            return "The boxes still hold the refused code. " + reset.error();
        }
    } else if (!boxesAreEmpty()) {
        for (const auto& deleted : {person_.tap(boxes.back()), person_.pressDelete(boxes.size())}) {
            if (!deleted) {
                return deleted.error();
            }
        }
    }
    const auto typed = person_.type(boxes.front(), code);
    return typed ? "" : typed.error();
}

std::string Display::tap(std::string_view button) {
    const auto tapped = person_.tap(button);
    return tapped ? "" : tapped.error();
}

std::string Display::type(std::string_view field, std::string_view text) {
    const auto typed = person_.type(field, text);
    return typed ? "" : typed.error();
}

bool Display::boxesAreEmpty() const {
    const auto screen = window_->visibleViewController();
    return std::ranges::all_of(boxes, [&](const auto* name) {
        const auto box = screen->view()->find<kivo::platform::TextField>(name);
        return !box || box->text().empty();
    });
}

void Display::returnToStart() {
    navigation_->popToViewController(start_, /*animated=*/true);
}

std::string Display::showFinalStatus(const std::shared_ptr<kivo::ThemeCustomization>& theme) {
    const auto storyboard =
        kivo::platform::Storyboard::open("ZORFramework", kivo::platform::services().bundles->main());
    if (!storyboard) {
        return storyboard.error();
    }
    const auto screen = (*storyboard)->instantiate("FinalStatusVC");
    if (!screen) {
        return screen.error();
    }
    if (const auto closing = std::dynamic_pointer_cast<kivo::FinalStatusVC>(*screen)) {
        closing->themeObj = theme;
    }
    bool isShown = false;
    navigation_->present(*screen, /*animated=*/true, [&] { isShown = true; });
    const auto shown = person_.waitFor([&] { return isShown; });
    return shown ? "" : shown.error();
}

} // namespace demo
