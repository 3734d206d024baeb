#pragma once

#include "services/acquisition/Settlement.hpp"
#include "services/acquisition/facemap/facetec/ScanUpload.hpp"

#include <kivo/ResponseCode.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kivo {

/// A screen on which the vendor's library scans.
class ScanScreen : public platform::ViewController {
public:
    /// Set before the view is loaded; null leaves the looks and texts of the storyboard and of the vendor.
    std::shared_ptr<ThemeCustomization> themeObj;

    void setLatestServerResult(std::string answer) { latestServerResult_ = std::move(answer); }

    /// The text of the last JSON object that the vendor's server answered; empty before the first.
    const std::string& latestServerResult() const { return latestServerResult_; }

    /// The outcome of a scan that the server has accepted.
    std::shared_ptr<const Settlement::Due> expectSuccess() { return settlement_->expect(); }

    /// The vendor's screens are gone. `success` is the outcome expected for an accepted scan; null without one.
    virtual void onComplete(std::shared_ptr<const Settlement::Due> success) = 0;

protected:
    /// Made when the view is loaded.
    std::shared_ptr<Settlement> settlement_;

private:
    std::string latestServerResult_;
};

/// Takes one scan after another to the vendor's server while the vendor's library waits, until the library is done.
/// Main thread.
class ScanProcessor : public std::enable_shared_from_this<ScanProcessor> {
public:
    ScanProcessor(const ScanProcessor&) = delete;
    ScanProcessor& operator=(const ScanProcessor&) = delete;
    virtual ~ScanProcessor() = default;

    /// Lets the library make a session, and the screen show the session. False without a library or a session.
    bool begin(const std::string& sessionToken);

protected:
    /// The callbacks of the waiting library, the same for every kind of scan. Exactly one of the first two is called,
    /// once.
    struct WaitingLibrary {
        std::function<bool(const std::string& scanResultBlob)> proceedToNextStep;
        std::function<void()> cancel;
        std::function<void(float fraction)> uploadProgress;
    };

    /// A success that is told to the host when the library is done, even if the host takes the screen away before.
    /// Until then the processor holds the screen; the library holds the processor as long as its session lasts.
    struct AcceptedScan {
        std::shared_ptr<ScanScreen> screen;
        std::shared_ptr<const Settlement::Due> due;
    };

    /// The log lines of a kind of scan.
    struct Wording {
        std::string_view function;
        std::string_view answered;
        std::string_view accepted;
        std::string_view refused;
    };

    explicit ScanProcessor(Wording wording)
        : wording_{wording} {}

    /// The library's screens are gone. A scan that is still under way is dropped and counts as failed.
    void libraryIsDone();

    /// Sends a scan. A former scan that is still under way is dropped, and its callbacks do not run again.
    void upload(platform::UrlRequest request, WaitingLibrary library);

    /// Drops the scan under way, if any.
    void cancelUpload() { upload_.reset(); }

    /// Expires when the server has answered or the upload has failed.
    std::weak_ptr<const ScanUpload> uploadUnderWay() const { return upload_; }

private:
    virtual std::shared_ptr<ScanScreen> screen() const = 0;
    virtual std::shared_ptr<platform::ViewController> createSessionVC(platform::FaceTec& vendor,
                                                                      const std::string& sessionToken) = 0;

    /// The server gave no usable answer.
    virtual void uploadDidFail(ResponseCode /*code*/) {}

    /// The server did not accept the scan.
    virtual void serverDidRefuse(std::string_view /*answer*/) {}

    void uploadDidEnd(platform::UrlOutcome outcome, const WaitingLibrary& library);
    void proceed(const std::string& scanResultBlob, const WaitingLibrary& library);

    const Wording wording_;
    std::shared_ptr<const ScanUpload> upload_;
    /// Set while the library shows the success of the scan.
    AcceptedScan accepted_;
};

/// A screen for face scans.
class FaceScanScreen : public ScanScreen {
public:
    virtual void setLatestSessionResult(std::shared_ptr<platform::FaceTecSessionResult> result) = 0;
    virtual std::string latestExternalDatabaseRefID() const = 0;
    virtual void scanDidFail(ResponseCode code) = 0;

    /// The server's answer does not say that the server accepted the scan.
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

/// A screen for ID scans.
class IDScanScreen : public ScanScreen {
public:
    virtual void setLatestIDScanResult(std::shared_ptr<platform::FaceTecIDScanResult> result) = 0;
};

/// Takes ID scans to the server for one session of the vendor's library. A failed upload only ends the library's
/// session: the screen reports the library's own verdict.
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
