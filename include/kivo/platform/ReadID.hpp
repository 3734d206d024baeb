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

/// The documents that can be read, by the sizes of ICAO 9303.
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
    /// Sizes and fonts; an absent font stands for the vendor's own.
    double textSize = 17;
    std::optional<Font> buttonFont{};
    std::optional<Font> titleFont{};
    std::optional<Font> textFont{};
    double buttonTextSize = 17;
    double buttonHeight = 50;
    double buttonCornerRadius = 0;
    /// Whether the screens follow the reading size that the person has set on the device.
    bool isDynamicTypeEnabled = false;
};

/// How much of the data a result screen shows.
enum class NFCResultDataMode { none, simple, full };
enum class VIZResultDataMode { none, simple, full };

/// The screen with what the chip gave.
struct NFCResultScreenConfiguration {
    /// How much of the data the screen shows.
    NFCResultDataMode nfcResultDataMode = NFCResultDataMode::full;
};

/// The screen with what the page gave.
struct VIZResultScreenConfiguration {
    /// How much of the data the screen shows.
    VIZResultDataMode vizResultDataMode = VIZResultDataMode::full;
};

/// The settings of a document reading.
struct NFCWithAccessControlFlow {
    /// The documents that a person may have read, and the looks of the screens.
    std::vector<DocumentType> allowedDocumentTypes{};
    std::shared_ptr<UIResources> uiResources{};
    /// The address of the document proxy, to which the vendor sends the document's data, and the proxy's access key.
    std::optional<std::string> baseUrl{};
    std::string accessKey{};
    /// How often the instructions are shown, whether only before the first reading, and whether a person chooses the
    /// document on the vendor's screen.
    int instructionsPlayCount = 0;
    bool shouldOnlyShowInstructionsOnFirstUse = true;
    bool shouldShowDocumentSelection = true;
    /// The number of failed readings of the chip after which a person may go on without the chip.
    int allowSkipReadingAfterAttempts = 0;
    /// Whether connections go to pinned servers only.
    bool shouldUsePinning = false;
    /// The pins of the keys with which the document's data is encrypted, in addition to the connection's own
    /// encryption. Empty for no such encryption.
    std::vector<std::string> applicationLevelEncryptionPins{};
    /// Which result screens are shown, and how.
    NFCResultScreenConfiguration nfcResultScreenConfiguration{};
    VIZResultScreenConfiguration vizResultScreenConfiguration{};
    bool shouldShowVIZResult = true;
    bool shouldShowNFCResult = true;
    /// Whether a picture is taken with a sound.
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

/// What reading the chip gave: the session at the document proxy.
struct NFCResult {
    /// The session; null when the vendor gives none.
    std::shared_ptr<ReadIDSession> readIDSession{};
};

/// The lines at the foot of a document's data page. Personal data: never logged.
struct MachineReadableZone {
    /// Each line as it is printed.
    std::vector<std::string> lines{};
};

/// What reading the lines gave.
struct MRZData {
    /// The lines.
    MachineReadableZone mrz{};
};

/// What reading the page gave.
struct VIZResult {
    /// The lines of the page.
    MRZData mrzData{};
};

/// A success in which the page was read, and no chip.
struct VIZOnly {
    /// The page.
    VIZResult viz{};
};

/// A success in which page and chip were read.
struct VIZNFC {
    /// The page and the chip.
    VIZResult viz{};
    NFCResult nfc{};
};

/// A success in which the chip was read, and no page.
struct NFCOnly {
    /// The chip.
    NFCResult nfc{};
};

/// A success of a kind that this release does not know.
struct UnknownSuccess {};

/// What was read, by the way in which the reading succeeded.
using SuccessValue = std::variant<VIZNFC, NFCOnly, VIZOnly, UnknownSuccess>;

/// A reading that ended without success.
struct Failure {
    /// Why, and the page if it had been read.
    FailureReason failureReason = FailureReason::other;
    std::optional<VIZResult> viz{};
};

/// How a reading ended.
using ReadIDResult = std::expected<SuccessValue, Failure>;

/// Why a reading could not begin.
struct ReadIDError {
    /// Why the vendor's library has not begun.
    enum class Kind { invalidConfiguration, nfcNotSupported, other };

    /// The kind, and the vendor's own words for the log.
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
