#include "Configuration/theme/ReadingSize.hpp"

#include <kivo/FinalStatusVC.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/Label.hpp>

#include <chrono>
#include <utility>

namespace kivo {

using namespace std::chrono_literals;

/// Stand-ins at first: a host may make the screen without a storyboard.
struct FinalStatusVC::Outlets {
    std::shared_ptr<platform::Label> completeTitleLabel = std::make_shared<platform::Label>();
    std::shared_ptr<platform::Label> closeAppInfoLabel = std::make_shared<platform::Label>();
    std::shared_ptr<platform::Button> backToHomeButton = std::make_shared<platform::Button>();
};

FinalStatusVC::FinalStatusVC()
    : outlets_{std::make_unique<Outlets>()} {}

FinalStatusVC::~FinalStatusVC() = default;

void FinalStatusVC::connect(platform::Interface& interface) {
    interface.outlet("completeTitleLabel", outlets_->completeTitleLabel);
    interface.outlet("closeAppInfoLabel", outlets_->closeAppInfoLabel);
    interface.outlet("backToHomeButton", outlets_->backToHomeButton);
    interface.action("newDocSigningTap", [this](const auto&) { dismiss(/*animated=*/true); });
}

void FinalStatusVC::viewWillAppear(bool /*animated*/) {
    applyFonts();
}

void FinalStatusVC::viewWillDisappear(bool /*animated*/) {
    const auto present = delegate.lock();
    auto kept = present ? present->finalStatusWillDisappear() : nullptr;
    platform::services().mainQueue->asyncAfter(100ms, [listener = delegate, kept = std::move(kept)] {
        if (const auto self = listener.lock()) {
            self->finalStatusDidDisappear();
        }
    });
}

void FinalStatusVC::traitCollectionDidChange() {
    applyFonts();
}

void FinalStatusVC::applyFonts() {
    if (!ui::followsReadingSize(*view(), themeObj)) {
        return;
    }
    ui::followReadingSize(*outlets_->completeTitleLabel, themeObj, &ThemeCustomization::screenTitleFont,
                          ui::finalTitleFallback);
    ui::followReadingSize(*outlets_->closeAppInfoLabel);
    ui::followReadingSize(*outlets_->backToHomeButton);
}

} // namespace kivo
