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

/// What a processor asks of the screen that started it.
class ScanScreen {
public:
    virtual ~ScanScreen() = default;

    virtual void showVendorScreen(const std::shared_ptr<platform::ViewController>& vendorScreen) = 0;
    virtual std::shared_ptr<ThemeCustomization> theme() const = 0;

    /// The last answer of the vendor's server that was a JSON object.
    virtual void setLatestServerResult(std::string answer) = 0;

    /// The outcome of a scan that the server has accepted.
    virtual std::shared_ptr<const Settlement::Due> expectSuccess() = 0;

    /// The vendor's screens are gone. `success` is what was expected of an accepted scan, and null without one.
    virtual void onComplete(std::shared_ptr<const Settlement::Due> success) = 0;
};

/// Takes one scan after the other to the vendor's server while the vendor's library waits, until the library is done.
/// Main thread.
class ScanProcessor : public std::enable_shared_from_this<ScanProcessor> {
public:
    ScanProcessor(const ScanProcessor&) = delete;
    ScanProcessor& operator=(const ScanProcessor&) = delete;
    virtual ~ScanProcessor() = default;

    /// Has the library make a session, and the screen show it. False where there is no library, or it makes none.
    bool begin(const std::string& sessionToken);

protected:
    /// How a waiting library hears of its scan, whichever kind of scan it was. One of the first two is called, once.
    struct WaitingLibrary {
        std::function<bool(const std::string& scanResultBlob)> proceedToNextStep;
        std::function<void()> cancel;
        std::function<void(float fraction)> uploadProgress;
    };

    /// A success that the host is told when the library is done, even if the host takes the screen away before. The
    /// processor holds the screen until then; the library holds the processor for as long as the library's session.
    struct AcceptedScan {
        std::shared_ptr<ScanScreen> screen;
        std::shared_ptr<const Settlement::Due> due;
    };

    /// How the log speaks of a kind of scan.
    struct Wording {
        std::string_view function;
        std::string_view answered;
        std::string_view accepted;
        std::string_view refused;
    };

    explicit ScanProcessor(Wording wording)
        : wording_{wording} {}

    /// The library's screens are gone. A scan still under way is dropped, and counts as failed.
    void libraryIsDone();

    /// Sends a scan. One that is still under way is dropped, and its library not called again.
    void upload(platform::UrlRequest request, WaitingLibrary library);

    /// Drops the scan under way, if any.
    void cancelUpload() { upload_.reset(); }

    /// Gone when the scan has reached the server or has failed.
    std::weak_ptr<const ScanUpload> uploadUnderWay() const { return upload_; }

private:
    virtual std::shared_ptr<ScanScreen> screen() const = 0;
    virtual std::shared_ptr<platform::ViewController> createSessionVC(platform::FaceTec& vendor,
                                                                      const std::string& sessionToken) = 0;

    /// There was no usable answer.
    virtual void uploadDidFail(ResponseCode /*code*/) {}

    /// The server did not accept the scan.
    virtual void serverDidRefuse(std::string_view /*answer*/) {}

    void uploadDidEnd(platform::UrlOutcome outcome, const WaitingLibrary& library);
    void proceed(const std::string& scanResultBlob, const WaitingLibrary& library);

    const Wording wording_;
    std::shared_ptr<const ScanUpload> upload_;
    /// While the library shows that the server has accepted the scan.
    AcceptedScan accepted_;
};

/// The success message of the vendor's result screen and its like; empty without a theme.
inline std::string themeText(const std::shared_ptr<ScanScreen>& screen, std::string ThemeCustomization::* text) {
    const auto theme = screen ? screen->theme() : nullptr;
    return theme ? (*theme).*text : std::string{};
}

} // namespace kivo
