#include "services/acquisition/facemap/facetec/FinalStatusVC.hpp"

#include "ui/DynamicType.hpp"

#include <kivo/platform/Services.hpp>

#include <chrono>

namespace kivo {

using namespace std::chrono_literals;

void FinalStatusVC::connect(platform::Interface& interface) {
    interface.outlet("completeTitleLabel", completeTitleLabel_);
    interface.outlet("closeAppInfoLabel", closeAppInfoLabel_);
    interface.outlet("backToHomeButton", backToHomeButton_);
    interface.action("newDocSigningTap", [this](const auto&) { dismiss(/*animated=*/true); });
}

void FinalStatusVC::viewWillAppear(bool /*animated*/) {
    applyFonts();
}

void FinalStatusVC::viewWillDisappear(bool /*animated*/) {
    platform::services().mainQueue->asyncAfter(100ms, [listener = delegate] {
        if (const auto self = listener.lock()) {
            self->finalStatusDidDisappear();
        }
    });
}

void FinalStatusVC::traitCollectionDidChange() {
    applyFonts();
}

void FinalStatusVC::applyFonts() {
    if (!ui::followsReadingSize(themeObj)) {
        return;
    }
    ui::followReadingSize(*completeTitleLabel_, themeObj ? themeObj->screenTitleFont : std::nullopt,
                          ui::finalTitleFallback);
    ui::followReadingSize(*closeAppInfoLabel_, std::nullopt);
    ui::followReadingSize(*backToHomeButton_, std::nullopt);
    ui::limitReadingSize(*view(), themeObj);
}

} // namespace kivo
