#pragma once

#include "services/acquisition/Settlement.hpp"
#include "services/acquisition/facemap/facetec/PhotoIDScanProcessor.hpp"
#include "services/acquisition/facemap/facetec/ScreenDelegates.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <string>

namespace kivo {

/// The ID scan screen: empty but for the vendor's screens over it, which it starts at once. It reports one scan and
/// closes itself, except where the library brought no result or the session has no token.
class OCRScanInitializeVC final : public platform::ViewController, public IDScanScreen {
public:
    // Set before the view is loaded.
    std::weak_ptr<OCRScanVCDelegate> delegate;
    /// Null leaves the vendor's looks.
    std::shared_ptr<ThemeCustomization> themeObj;
    /// Keeps the presenter's own answer back while this scan is unanswered.
    std::shared_ptr<const void> dueUntilTold;

    void viewDidLoad() override;
    void didGoBack() override;

    void showVendorScreen(const std::shared_ptr<platform::ViewController>& vendorScreen) override;

    std::shared_ptr<ThemeCustomization> theme() const override { return themeObj; }

    void setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) override;
    void setLatestServerResult(std::string answer) override;

    /// The text of the JSON object that the vendor's server answered last; empty before.
    const std::string& latestServerResult() const { return latestServerResult_; }

    std::shared_ptr<const Settlement::Due> expectSuccess() override { return settlement_->expect(); }

    void onComplete(std::shared_ptr<const Settlement::Due> success) override;

private:
    std::shared_ptr<OCRScanInitializeVC> self() {
        return std::static_pointer_cast<OCRScanInitializeVC>(shared_from_this());
    }

    void initializeFacetecOcr();
    void scanDidSucceed(const Settlement::Due& due);
    void scanDidNotSucceed(const std::shared_ptr<const Settlement::Due>& due);
    /// The screen has given its one answer.
    void retire();
    void close();

    std::shared_ptr<platform::FaceTecIDScanResult> latestIDScanResult_;
    std::string latestServerResult_;
    std::shared_ptr<Settlement> settlement_;
};

} // namespace kivo
