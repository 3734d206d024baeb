#pragma once

#include "services/acquisition/facemap/facetec/ScanProcessor.hpp"

#include <kivo/platform/FaceTec.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo {

/// What the processor of a face scan asks of its screen.
class FaceScanScreen : public ScanScreen {
public:
    virtual void setLatestSessionResult(std::shared_ptr<platform::FaceTecSessionResult> result) = 0;
    virtual std::string latestExternalDatabaseRefID() const = 0;
    virtual void scanDidFail(ResponseCode code) = 0;

    /// The server's answer does not say that it accepted.
    virtual void handleServerFailure(std::string_view data) = 0;
};

/// Takes face scans to the server for one session of the vendor's library.
class EnrollmentProcessor final : public ScanProcessor, public platform::FaceTecFaceScanProcessorDelegate {
public:
    explicit EnrollmentProcessor(std::weak_ptr<FaceScanScreen> fromViewController);

    void processSessionWhileFaceTecSDKWaits(std::shared_ptr<platform::FaceTecSessionResult> sessionResult,
                                            std::shared_ptr<platform::FaceTecFaceScanResultCallback> callback) override;

    void onFaceTecSDKCompletelyDone() override { libraryIsDone(); }

private:
    std::shared_ptr<ScanScreen> screen() const override { return fromViewController_.lock(); }

    std::shared_ptr<platform::ViewController> createSessionVC(platform::FaceTec& vendor,
                                                              const std::string& sessionToken) override;

    void uploadDidFail(ResponseCode code) override;
    void serverDidRefuse(std::string_view answer) override;
    void explainSlowUpload(const std::shared_ptr<platform::FaceTecFaceScanResultCallback>& callback) const;

    const std::weak_ptr<FaceScanScreen> fromViewController_;
};

} // namespace kivo
