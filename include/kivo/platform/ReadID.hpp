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

    /// Where images and the string table are; null for the vendor's own.
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

/// How much of what was read a result screen shows.
enum class NFCResultDataMode { none, simple, full };
enum class VIZResultDataMode { none, simple, full };

struct NFCResultScreenConfiguration {
    NFCResultDataMode nfcResultDataMode = NFCResultDataMode::full;
};

struct VIZResultScreenConfiguration {
    VIZResultDataMode vizResultDataMode = VIZResultDataMode::full;
};

/// What a document reading is to do.
struct NFCWithAccessControlFlow {
    std::vector<DocumentType> allowedDocumentTypes{};
    std::shared_ptr<UIResources> uiResources{};
    /// The document proxy: where the vendor sends what it reads, and the key that opens it.
    std::optional<std::string> baseUrl{};
    std::string accessKey{};
    int instructionsPlayCount = 0;
    bool shouldOnlyShowInstructionsOnFirstUse = true;
    bool shouldShowDocumentSelection = true;
    int allowSkipReadingAfterAttempts = 0;
    bool shouldUsePinning = false;
    /// What the document data is encrypted for, beyond the connection's own encryption; empty for nothing.
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

    /// The name under which the document proxy keeps what was read.
    virtual std::string sessionId() const = 0;

    /// Tells the vendor that the session is of no more use here.
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

    /// New looks with the vendor's defaults; never null. Asked for once, when
    /// `ThemeCustomization::passportScanViewCustomization` is first read, and given back with every flow.
    virtual std::shared_ptr<readid::UIResources> makeUIResources() = 0;

    /// Presents the reading screens over `from` and calls `handler` once, on the main thread, when they are gone.
    /// With an error nothing is presented and the handler is never called.
    virtual std::expected<void, readid::ReadIDError>
    identify(const std::shared_ptr<ViewController>& from, ModalPresentationStyle modalPresentationStyle,
             const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow,
             std::function<void(readid::ReadIDResult)> handler) = 0;
};

} // namespace kivo::platform
