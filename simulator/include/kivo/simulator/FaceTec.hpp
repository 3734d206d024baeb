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
/// It follows its scripts, or waits for somebody in front of its screens, and keeps what it was given. Everything
/// happens on the main queue.
class FaceTec final : public platform::FaceTec {
public:
    struct Initialization {
        bool isProduction;
        std::string productionKey;
        std::string deviceKeyIdentifier;
        std::string faceScanEncryptionKey;
    };

    FaceTec();
    FaceTec(const FaceTec&) = delete;
    FaceTec& operator=(const FaceTec&) = delete;
    ~FaceTec() override;

    // How it behaves. A session keeps what holds when it is made.

    ScanScript faceScan;
    ScanScript idScan;

    /// Not 0: the initialisation fails, and a session begun nevertheless ends at once with this number.
    int initializationStatus = 0;
    std::chrono::milliseconds initializationTime{0};

    /// Whether sessions wait for the buttons of their screens: `finishScanButton`, `cancelScanButton`,
    /// `timeOutButton`, `refuseCameraButton`, `switchAppButton`, then `scanAgainButton` or `continueButton`.
    bool waitsForPerson = false;

    // What it was given.

    const std::vector<Initialization>& initializations() const { return initializations_; }

    const std::string& language() const { return language_; }

    const std::shared_ptr<platform::FaceTecCustomization>& customization() const { return customization_; }

    const std::shared_ptr<platform::FaceTecCustomization>& lowLightCustomization() const {
        return lowLightCustomization_;
    }

    /// The text of the result screen; empty: the vendor's own.
    const std::string& successMessage() const;

    /// Every session so far, in the order in which they were made.
    std::vector<ScanRecord> sessions() const;

    /// What a careful vendor forbids and was done nevertheless, each in a sentence. Assert that there is none.
    const std::vector<std::string>& violations() const;

    /// Drops the sessions that are over and the initialisations, for a test that runs for long. Violations stay.
    void forgetSessions();

    // The vendor's operations.

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
