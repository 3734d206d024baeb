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

/// Fonts, sizes and texts of the vendor's screens; shared by all sessions of the process.
struct UIResources {
    std::shared_ptr<Bundle> customBundle{};
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

enum class ResultDataMode { none, simple, full };

/// What a document reading is to do.
struct NFCWithAccessControlFlow {
    std::vector<DocumentType> allowedDocumentTypes{};
    std::shared_ptr<UIResources> uiResources{};
    std::optional<std::string> baseUrl{};
    std::string accessKey{};
    int instructionsPlayCount = 0;
    bool shouldOnlyShowInstructionsOnFirstUse = true;
    bool shouldShowDocumentSelection = true;
    int allowSkipReadingAfterAttempts = 0;
    bool shouldUsePinning = false;
    std::vector<std::string> applicationLevelEncryptionPins{};
    ResultDataMode nfcResultDataMode = ResultDataMode::full;
    ResultDataMode vizResultDataMode = ResultDataMode::full;
    bool shouldShowVIZResult = true;
    bool shouldShowNFCResult = true;
    bool shouldPlayShutterSound = true;
};

/// The vendor's session of one reading. Main thread only.
class KIVO_EXPORT ReadIDSession {
public:
    virtual ~ReadIDSession() = default;

    virtual std::string sessionId() const = 0;
    virtual void finish(std::function<void()> completionHandler) = 0;
};

struct NFCResult {
    std::shared_ptr<ReadIDSession> readIDSession{};
};

struct VIZResult {
    /// The lines of the machine readable zone. Personal data: never logged.
    std::vector<std::string> mrzLines{};
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

using Result = std::expected<SuccessValue, Failure>;

/// Why a reading could not begin.
struct Error {
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

    /// Presents the reading screens over `from` and calls `handler` once, on the main thread, when they are gone.
    /// With an error nothing is presented and the handler is never called.
    virtual std::expected<void, readid::Error> identify(const std::shared_ptr<ViewController>& from,
                                                        ModalPresentationStyle modalPresentationStyle,
                                                        const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow,
                                                        std::function<void(readid::Result)> handler) = 0;
};

} // namespace kivo::platform
