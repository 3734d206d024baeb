#pragma once

#include "services/acquisition/ScreenDelegates.hpp"
#include "services/acquisition/Settlement.hpp"
#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <memory>
#include <string>

namespace kivo {

/// The ID scan screen: empty under the vendor's screens, which start at once. The screen reports one scan and closes
/// itself, except where the library brought no result or the session has no token.
class OCRScanInitializeVC final : public IDScanScreen {
public:
    /// Set before the view is loaded.
    std::weak_ptr<OCRScanVCDelegate> delegate;
    /// Holds back the presenter's own answer until this screen has given its answer.
    std::shared_ptr<const void> dueUntilTold;

    void viewDidLoad() override;
    void didGoBack() override;

    void setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) override;
    void onComplete(std::shared_ptr<const Settlement::Due> success) override;

private:
    std::shared_ptr<OCRScanInitializeVC> self() {
        return std::static_pointer_cast<OCRScanInitializeVC>(shared_from_this());
    }

    void initializeFacetecOcr();
    void scanDidSucceed(const Settlement::Due& due);
    void scanDidNotSucceed(const std::shared_ptr<const Settlement::Due>& due);
    /// Ends the reporting: the screen has given its one answer.
    void retire();
    void close();

    std::shared_ptr<platform::FaceTecIDScanResult> latestIDScanResult_;
};

} // namespace kivo
