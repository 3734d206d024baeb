#pragma once

#include <kivo/platform/ReadID.hpp>
#include <kivo/reader/Card.hpp>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

namespace kivo::reader {

/// How a document reader works. Every member has a default for a host with a card reader and a camera.
struct DocumentReaderOptions {
    /// Where cards come from; null for the system's card readers (`systemCards()`).
    std::shared_ptr<CardSource> cards{};
    /// The folder with the certificates of the country authorities that the host trusts (DER or PEM), their master
    /// lists and their lists of revoked certificates. Read anew for each reading. Empty: no authority is trusted, and
    /// `signer-is-trusted` is not tried.
    std::filesystem::path countryCertificates{};
    /// Whether a person may hold the page before the camera. Without a camera the person types three values.
    bool usesCamera = true;
    /// Whether the groups beside those with the data of the page, the portrait and the chip's keys are read: the
    /// signature (DG7), and further data of the person and of the document (DG11, DG12).
    bool readsFurtherData = true;
    /// How long a person may take on a page of the screens before the reading ends, so that a display without a person
    /// shows no personal data.
    std::chrono::milliseconds patienceForPerson{std::chrono::minutes{5}};
    /// How long a document is waited for at the card reader, and how long the reading may take from then on.
    std::chrono::milliseconds patienceForCard{std::chrono::seconds{60}};
    std::chrono::milliseconds patienceForReading{std::chrono::seconds{60}};
};

/// Reads passports and identity cards: the page with the machine's camera or by hand, the chip with a card reader.
/// Sends what was read to the session's document proxy (docs/document-proxy.md).
///
///     platform::Services services;
///     services.readID = std::make_shared<reader::DocumentReader>(
///         reader::DocumentReaderOptions{.countryCertificates = "/etc/example/country-certificates"});
///     platform::install(services); // before the first call to the SDK
///
/// Of a flow the reader honours every member, with these notes:
/// - no allowed type of document stands for all types;
/// - `instructionsPlayCount` greater than 0 shows a page of instructions before the first page, with
///   `shouldOnlyShowInstructionsOnFirstUse` only in the first reading of this object;
/// - `allowSkipReadingAfterAttempts` of 0 or less never offers to go on without the chip; neither does a reading in
///   which the page was not read by the camera;
/// - `shouldUsePinning` counts where the host's main bundle has the list "readid_certificates", or where the deployment
///   requires pins;
/// - each of `applicationLevelEncryptionPins` is base64 of a key of 32 bytes, or of a certificate in DER form;
/// - `shouldPlayShutterSound` changes nothing: the reader looks at the camera's pictures as they come, and takes none.
///
/// The screens speak the person's language where the reader's bundle has it: English, German, French, Spanish, Polish,
/// Arabic or Japanese. Their English texts are keys, for which the table `UIResources::customStringTableName` goes
/// before. Colours such as "Kivo.Background" come from `UIResources::customBundle`, else from the host's main bundle,
/// else from the reader's. Nothing of a document is written to a disk or to a log. A reading in which the person has
/// typed the values ends in `NFCOnly`.
///
/// A failed step shows a page that tells the person what to do; the reading ends with the reason when the person gives
/// up on that page. `backgroundTimeout` and, before the document is known, `vizCaptureTimeout` end a reading whose
/// person is gone.
class KIVO_EXPORT DocumentReader final : public platform::ReadID {
public:
    /// A reader with these options.
    explicit DocumentReader(DocumentReaderOptions options = {});
    DocumentReader(const DocumentReader&) = delete;
    DocumentReader& operator=(const DocumentReader&) = delete;
    /// A reading under way goes on to its end.
    ~DocumentReader() override;

    /// Resources with the defaults of `UIResources`, with texts that follow the reading size and round buttons.
    std::shared_ptr<platform::readid::UIResources> makeUIResources() override;

    /// Begins a reading. Errors: `invalidConfiguration` where the flow's `baseUrl` is no https address, a key cannot be
    /// used, or the folder of certificates cannot be read; `nfcNotSupported` where the service of the card readers does
    /// not run; `other` while another reading is under way.
    std::expected<void, platform::readid::ReadIDError>
    identify(const std::shared_ptr<platform::ViewController>& from,
             platform::ModalPresentationStyle modalPresentationStyle,
             const std::shared_ptr<platform::readid::NFCWithAccessControlFlow>& flow,
             std::function<void(platform::readid::ReadIDResult)> handler) override;

private:
    class State;

    std::unique_ptr<State> state_;
};

} // namespace kivo::reader
