#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/AttributedText.hpp>
#include <kivo/platform/ui/Image.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// The look of the vendor's screens. An adapter derives from it and adds what its library offers.
class KIVO_EXPORT FaceTecCustomization {
public:
    /// The look of the screens that help a person.
    struct Guidance {
        /// The pictures of the screen that asks to try again; empty for the vendor's own pictures.
        std::vector<std::shared_ptr<const Image>> retryScreenSlideshowImages;
    };

    virtual ~FaceTecCustomization() = default;

    /// The look of the screens that help a person.
    Guidance guidanceCustomization;
};

/// The result of a face session, as the vendor's library gives it.
class KIVO_EXPORT FaceTecSessionResult {
public:
    virtual ~FaceTecSessionResult() = default;

    /// The vendor's number; 0 for a completed session.
    virtual int status() const = 0;
    /// The vendor's session; absent without one.
    virtual std::optional<std::string> sessionId() const = 0;
    /// Base64, some megabytes. The reference is valid as long as the result.
    virtual const std::optional<std::string>& faceScanBase64() const = 0;
    /// Pictures in Base64. The references are valid as long as the result.
    virtual const std::vector<std::string>& auditTrailCompressedBase64() const = 0;
    virtual const std::vector<std::string>& lowQualityAuditTrailCompressedBase64() const = 0;

    /// A text for the log.
    virtual std::string description() const = 0;
};

/// The result of an ID scan.
class KIVO_EXPORT FaceTecIDScanResult {
public:
    virtual ~FaceTecIDScanResult() = default;

    /// As for a face session; the pictures are of the front and of the back of the card.
    virtual int status() const = 0;
    virtual std::optional<std::string> sessionId() const = 0;
    virtual const std::optional<std::string>& idScanBase64() const = 0;
    virtual const std::vector<std::string>& frontImagesCompressedBase64() const = 0;
    virtual const std::vector<std::string>& backImagesCompressedBase64() const = 0;
    virtual std::string description() const = 0;
};

/// Gives the waiting library the server's verdict about a face scan. Main thread.
class KIVO_EXPORT FaceTecFaceScanResultCallback {
public:
    virtual ~FaceTecFaceScanResultCallback() = default;

    /// Passes the server's blob to the library. False when the library rejects the scan.
    virtual bool onFaceScanResultProceedToNextStep(const std::string& scanResultBlob) = 0;
    /// Ends the session without success.
    virtual void onFaceScanResultCancel() = 0;
    /// From 0 to 1.
    virtual void onFaceScanUploadProgress(float progress) = 0;
    /// A text to show while an upload takes long.
    virtual void onFaceScanUploadMessageOverride(const AttributedText& message) = 0;
};

/// Gives the waiting library the server's verdict about an ID scan. Main thread.
class KIVO_EXPORT FaceTecIDScanResultCallback {
public:
    virtual ~FaceTecIDScanResultCallback() = default;

    /// As for a face scan.
    virtual bool onIDScanResultProceedToNextStep(const std::string& scanResultBlob) = 0;
    virtual void onIDScanResultCancel() = 0;
    virtual void onIDScanUploadProgress(float progress) = 0;
};

/// Takes a session's result to the server. The library calls the delegate on the main thread, and holds a reference
/// during the session.
class KIVO_EXPORT FaceTecFaceScanProcessorDelegate {
public:
    virtual ~FaceTecFaceScanProcessorDelegate() = default;

    /// Takes the result to the server, and gives the verdict to `callback`.
    virtual void processSessionWhileFaceTecSDKWaits(std::shared_ptr<FaceTecSessionResult> sessionResult,
                                                    std::shared_ptr<FaceTecFaceScanResultCallback> callback) = 0;
    /// The library has closed its screens.
    virtual void onFaceTecSDKCompletelyDone() = 0;
};

/// Takes the result of an ID scan to the server, like `FaceTecFaceScanProcessorDelegate` that of a face.
class KIVO_EXPORT FaceTecIDScanProcessorDelegate {
public:
    virtual ~FaceTecIDScanProcessorDelegate() = default;

    /// As for a face session.
    virtual void processIDScanWhileFaceTecSDKWaits(std::shared_ptr<FaceTecIDScanResult> idScanResult,
                                                   std::shared_ptr<FaceTecIDScanResultCallback> callback) = 0;
    virtual void onFaceTecSDKCompletelyDone() = 0;
};

/// The face-scan vendor's library, as far as this SDK uses it. A host brings an adapter; main thread only.
class KIVO_EXPORT FaceTec {
public:
    virtual ~FaceTec() = default;

    /// `productionKey` is `Deployment::faceTecProductionKey`, the other two are the session's; each may be empty.
    /// `completion` may come on any thread, once.
    virtual void initializeInProductionMode(const std::string& productionKey, const std::string& deviceKeyIdentifier,
                                            const std::string& faceScanEncryptionKey,
                                            std::function<void(bool)> completion) = 0;
    virtual void initializeInDevelopmentMode(const std::string& deviceKeyIdentifier,
                                             const std::string& faceScanEncryptionKey,
                                             std::function<void(bool)> completion) = 0;
    /// The language of the vendor's screens, such as "en".
    virtual void setLanguage(std::string_view language) = 0;

    /// A new look with the vendor's defaults.
    virtual std::shared_ptr<FaceTecCustomization> makeCustomization() = 0;
    virtual void setCustomization(std::shared_ptr<FaceTecCustomization> customization) = 0;
    virtual void setLowLightCustomization(std::shared_ptr<FaceTecCustomization> customization) = 0;
    virtual void setOverrideResultScreenSuccessMessage(const std::string& message) = 0;

    /// The user agent with which the scan of that session is uploaded.
    virtual std::string createFaceTecAPIUserAgentString(const std::string& sessionId) = 0;

    /// The vendor's own screen for one face session, to be presented; null when it cannot be made.
    virtual std::shared_ptr<ViewController>
    createSessionVC(std::shared_ptr<FaceTecFaceScanProcessorDelegate> faceScanProcessor,
                    const std::string& sessionToken) = 0;
    virtual std::shared_ptr<ViewController>
    createSessionVC(std::shared_ptr<FaceTecIDScanProcessorDelegate> idScanProcessor,
                    const std::string& sessionToken) = 0;
};

} // namespace kivo::platform
