#pragma once

#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include <kivo/platform/FaceTec.hpp>

#include <memory>
#include <string>

namespace kivo {

/// What the processor of an ID scan asks of its screen.
class IDScanScreen : public ScanScreen {
public:
    virtual void setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) = 0;
};

/// Takes ID scans to the server for one session of the vendor's library. What goes wrong on the way only ends the
/// library's session; the screen reports by the library's own verdict.
class PhotoIDScanProcessor final : public ScanProcessor, public platform::FaceTecIDScanProcessorDelegate {
public:
    explicit PhotoIDScanProcessor(std::weak_ptr<IDScanScreen> fromViewController);

    void processIDScanWhileFaceTecSDKWaits(std::shared_ptr<platform::FaceTecIDScanResult> idScanResult,
                                           std::shared_ptr<platform::FaceTecIDScanResultCallback> callback) override;

    void onFaceTecSDKCompletelyDone() override { libraryIsDone(); }

private:
    std::shared_ptr<ScanScreen> screen() const override { return fromViewController_.lock(); }

    std::shared_ptr<platform::ViewController> createSessionVC(platform::FaceTec& vendor,
                                                              const std::string& sessionToken) override;

    const std::weak_ptr<IDScanScreen> fromViewController_;
};

} // namespace kivo
