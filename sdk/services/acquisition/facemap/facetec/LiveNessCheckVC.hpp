#pragma once

#include "Configuration/theme/ThemeApplication.hpp"
#include "services/acquisition/ScreenDelegates.hpp"
#include "services/acquisition/Settlement.hpp"
#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/Interface.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

/// The face scan screen: explains the scan, and lets the vendor's library scan on the next button.
///
/// After a failed scan the screen offers the next try. After a successful scan the screen stays, empty, until the
/// session API decides what comes next.
class LiveNessCheckVC final : public FaceScanScreen {
public:
    /// Set before the view is loaded.
    std::weak_ptr<LivenessCheckVCDelegate> delegate;

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    void willMoveFromParent() override;
    void didGoBack() override;
    void traitCollectionDidChange() override;

    void setLatestSessionResult(std::shared_ptr<platform::FaceTecSessionResult> result) override;

    /// Always empty: the vendor's database has no entry for the person.
    std::string latestExternalDatabaseRefID() const override { return {}; }

    void scanDidFail(ResponseCode code) override;
    void handleServerFailure(std::string_view data) override;

    void onComplete(std::shared_ptr<const Settlement::Due> success) override;

protected:
    void connect(platform::Interface& interface) override;

private:
    std::shared_ptr<LiveNessCheckVC> self() { return std::static_pointer_cast<LiveNessCheckVC>(shared_from_this()); }

    void applyTheme();
    void applyDynamicType();
    void showStateOfFaceStep();
    void setContentHidden(bool hidden);
    void onLivenessButtonClick();
    void scanDidSucceed(const Settlement::Due& due);
    /// `due` is null without a code.
    void scanDidNotSucceed(const platform::FaceTecSessionResult* result, std::optional<ResponseCode> code,
                           const std::shared_ptr<const Settlement::Due>& due);
    void closeButtonTap();

    std::shared_ptr<platform::Label> titleInfoLabel_;
    std::shared_ptr<platform::Label> processDescriptionLabel_;
    std::shared_ptr<platform::Button> nextButton_;
    std::shared_ptr<platform::View> stepIllustration_;
    std::shared_ptr<platform::View> stepDoneView_;
    ui::CloseButton closeButton_;

    /// Held only until the scan has been reported: a result may have many megabytes.
    std::shared_ptr<platform::FaceTecSessionResult> latestSessionResult_;
};

} // namespace kivo
