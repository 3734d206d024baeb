#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/ViewController.hpp>

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace kivo::platform::readid {

enum class DocumentType { passport, identityCardTD1, identityCardTD2 };

/// Why a reading failed, in the vendor's words. `other` stands for reasons that this release does not know.
enum class FailureReason {
    backgroundTimeout,
    sessionExpired,
    authorisationError,
    serverSessionError,
    sslError,
    nfcAccessControlError,
    connectionError,
    tooManyRequestsError,
    nfcError,
    userCancelled,
    cameraPermissionDenied,
    noChip,
    unsupportedDocument,
    backNavigation,
    wrongDocumentType,
    vizCaptureTimeout,
    other,
};

/// Fonts, sizes and texts of the vendor's screens; shared by all sessions of the process. Sizes are in points. An
/// adapter sets the vendor's defaults, and may derive from this to add what its library offers.
struct KIVO_EXPORT UIResources {
    virtual ~UIResources() = default;

    /// The bundle of the images and the string table; null for the vendor's own.
    std::shared_ptr<Bundle> customBundle{};
    /// The table of `customBundle` with the texts; absent for the vendor's own.
    std::optional<std::string> customStringTableName{};
    double textSize = 17;
    std::optional<Font> buttonFont{};
    std::optional<Font> titleFont{};
    std::optional<Font> textFont{};
    double buttonTextSize = 17;
    double buttonHeight = 50;
    double buttonCornerRadius = 0;
    bool isDynamicTypeEnabled = false;
};

/// How much of the data a result screen shows.
enum class NFCResultDataMode { none, simple, full };
enum class VIZResultDataMode { none, simple, full };

struct NFCResultScreenConfiguration {
    NFCResultDataMode nfcResultDataMode = NFCResultDataMode::full;
};

struct VIZResultScreenConfiguration {
    VIZResultDataMode vizResultDataMode = VIZResultDataMode::full;
};

/// The settings of a document reading.
struct NFCWithAccessControlFlow {
    std::vector<DocumentType> allowedDocumentTypes{};
    std::shared_ptr<UIResources> uiResources{};
    /// The address of the document proxy, to which the vendor sends the document's data, and the proxy's access key.
    std::optional<std::string> baseUrl{};
    std::string accessKey{};
    int instructionsPlayCount = 0;
    bool shouldOnlyShowInstructionsOnFirstUse = true;
    bool shouldShowDocumentSelection = true;
    int allowSkipReadingAfterAttempts = 0;
    bool shouldUsePinning = false;
    /// The pins of the keys with which the document's data is encrypted, in addition to the connection's own
    /// encryption. Empty for no such encryption.
    std::vector<std::string> applicationLevelEncryptionPins{};
    NFCResultScreenConfiguration nfcResultScreenConfiguration{};
    VIZResultScreenConfiguration vizResultScreenConfiguration{};
    bool shouldShowVIZResult = true;
    bool shouldShowNFCResult = true;
    bool shouldPlayShutterSound = true;
};

/// The vendor's session of one reading. Main thread only.
class KIVO_EXPORT ReadIDSession {
public:
    virtual ~ReadIDSession() = default;

    /// The name under which the document proxy keeps the document's data.
    virtual std::string sessionId() const = 0;

    /// Tells the vendor that the SDK no longer needs the session.
    virtual void finish(std::function<void()> completionHandler) = 0;
};

struct NFCResult {
    std::shared_ptr<ReadIDSession> readIDSession{};
};

/// The lines at the foot of a document's data page. Personal data: never logged.
struct MachineReadableZone {
    std::vector<std::string> lines{};
};

struct MRZData {
    MachineReadableZone mrz{};
};

struct VIZResult {
    MRZData mrzData{};
};

struct VIZOnly {
    VIZResult viz{};
};

struct VIZNFC {
    VIZResult viz{};
    NFCResult nfc{};
};

struct NFCOnly {
    NFCResult nfc{};
};

/// A success of a kind that this release does not know.
struct UnknownSuccess {};

using SuccessValue = std::variant<VIZNFC, NFCOnly, VIZOnly, UnknownSuccess>;

struct Failure {
    FailureReason failureReason = FailureReason::other;
    std::optional<VIZResult> viz{};
};

using ReadIDResult = std::expected<SuccessValue, Failure>;

/// Why a reading could not begin.
struct ReadIDError {
    enum class Kind { invalidConfiguration, nfcNotSupported, other };

    Kind kind = Kind::other;
    std::string message{};
};

} // namespace kivo::platform::readid

namespace kivo::platform {

/// The document-reading vendor's library, as far as this SDK uses it. A host brings an adapter; main thread only.
class KIVO_EXPORT ReadID {
public:
    virtual ~ReadID() = default;

    /// New resources with the vendor's defaults; never null. Called once, when
    /// `ThemeCustomization::passportScanViewCustomization` is first read. Every flow carries the result.
    virtual std::shared_ptr<readid::UIResources> makeUIResources() = 0;

    /// Presents the reading screens over `from`. Calls `handler` once, on the main thread, after the screens have
    /// closed. With an error, no screen is presented and the handler is never called.
    virtual std::expected<void, readid::ReadIDError>
    identify(const std::shared_ptr<ViewController>& from, ModalPresentationStyle modalPresentationStyle,
             const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow,
             std::function<void(readid::ReadIDResult)> handler) = 0;
};

} // namespace kivo::platform
