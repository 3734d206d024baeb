#pragma once

#include "Models/ActivationSessionModel.hpp"
#include "services/acquisition/facemap/facetec/ScreenDelegates.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>

namespace kivo {

/// The screen at the end: all is done, the application can be closed. Hosts present it; the SDK itself does not.
class FinalStatusVC final : public platform::ViewController {
public:
    // Set before the view is loaded.
    std::weak_ptr<FinalStatusVCDelegate> delegate;
    /// Null leaves the storyboard's looks.
    std::shared_ptr<ThemeCustomization> themeObj;
    /// For whoever presents the screen.
    std::optional<ActivationResponse> sessionObject;

    void viewWillAppear(bool animated) override;
    void viewWillDisappear(bool animated) override;
    void traitCollectionDidChange() override;

protected:
    void connect(platform::Interface& interface) override;

private:
    void applyFonts();

    std::shared_ptr<platform::Label> completeTitleLabel_;
    std::shared_ptr<platform::Label> closeAppInfoLabel_;
    std::shared_ptr<platform::Button> backToHomeButton_;
};

} // namespace kivo
