#pragma once

#include <kivo/platform/FaceTec.hpp>
#include <kivo/simulator/ScanScript.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::simulator {

class ScanProcessor;
struct FaceTecMemory;

/// A face-scan vendor without a camera. Install it as `platform::Services::faceTec`.
///
/// The vendor follows its scripts, or waits for a person to tap its buttons, and records all that the SDK hands over.
/// Everything happens on the main queue.
class FaceTec final : public platform::FaceTec {
public:
    /// What the SDK has handed over at a beginning of the library.
    struct Initialization {
        /// The mode and the keys, as they came.
        bool isProduction;
        std::string productionKey;
        std::string deviceKeyIdentifier;
        std::string faceScanEncryptionKey;
    };

    FaceTec();
    FaceTec(const FaceTec&) = delete;
    FaceTec& operator=(const FaceTec&) = delete;
    ~FaceTec() override;

    // The vendor's behaviour. A session takes a copy when it is made.

    /// What happens in a face session, and in an ID scan.
    ScanScript faceScan;
    ScanScript idScan;

    /// With another number than 0 the initialisation fails, and a session that is begun nevertheless ends at once with
    /// this number.
    int initializationStatus = 0;
    /// How long a beginning takes.
    std::chrono::milliseconds initializationTime{0};

    /// Whether sessions wait for the buttons of their screens: `finishScanButton`, `cancelScanButton`,
    /// `timeOutButton`, `refuseCameraButton`, `switchAppButton`, then `scanAgainButton` or `continueButton`.
    bool waitsForPerson = false;

    // The records.

    /// Every beginning so far.
    const std::vector<Initialization>& initializations() const { return initializations_; }

    /// The language that was set last.
    const std::string& language() const { return language_; }

    /// The look that was set last; null before.
    const std::shared_ptr<platform::FaceTecCustomization>& customization() const { return customization_; }

    /// The look for the dark that was set last; null before.
    const std::shared_ptr<platform::FaceTecCustomization>& lowLightCustomization() const {
        return lowLightCustomization_;
    }

    /// The text of the result screen; empty for the vendor's own text.
    const std::string& successMessage() const;

    /// Every session so far, in the order in which they were made.
    std::vector<ScanRecord> sessions() const;

    /// Breaches of the vendor's rules, a sentence each. Assert at the end of a test that there are none.
    const std::vector<std::string>& violations() const;

    /// Drops the records of finished sessions and of initialisations, for a test that runs for long. Violations stay.
    void forgetSessions();

    // The vendor's operations.

    /// What the SDK asks of the vendor's library.
    void initializeInProductionMode(const std::string& productionKey, const std::string& deviceKeyIdentifier,
                                    const std::string& faceScanEncryptionKey,
                                    std::function<void(bool)> completion) override;
    void initializeInDevelopmentMode(const std::string& deviceKeyIdentifier, const std::string& faceScanEncryptionKey,
                                     std::function<void(bool)> completion) override;
    void setLanguage(std::string_view language) override;
    std::shared_ptr<platform::FaceTecCustomization> makeCustomization() override;
    void setCustomization(std::shared_ptr<platform::FaceTecCustomization> customization) override;
    void setLowLightCustomization(std::shared_ptr<platform::FaceTecCustomization> customization) override;
    void setOverrideResultScreenSuccessMessage(const std::string& message) override;
    std::string createFaceTecAPIUserAgentString(const std::string& sessionId) override;
    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecFaceScanProcessorDelegate> faceScanProcessor,
                    const std::string& sessionToken) override;
    std::shared_ptr<platform::ViewController>
    createSessionVC(std::shared_ptr<platform::FaceTecIDScanProcessorDelegate> idScanProcessor,
                    const std::string& sessionToken) override;

private:
    void initialize(Initialization initialization, std::function<void(bool)> completion);
    std::shared_ptr<platform::ViewController> createSession(std::unique_ptr<ScanProcessor> processor,
                                                            const ScanScript& script, const std::string& sessionToken);

    /// Shared with the sessions, which may outlive the vendor.
    std::shared_ptr<FaceTecMemory> memory_;
    std::vector<Initialization> initializations_;
    std::string language_;
    std::shared_ptr<platform::FaceTecCustomization> customization_;
    std::shared_ptr<platform::FaceTecCustomization> lowLightCustomization_;
};

} // namespace kivo::simulator
