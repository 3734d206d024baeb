#include "c/Handles.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/c/document_reader.h>
#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

struct kivo_reading {
    kivo_document_reader reader;
    std::function<void(kivo::platform::readid::ReadIDResult)> handler;
};

namespace {

using namespace kivo;
namespace readid = platform::readid;

constexpr std::size_t mostLines = 8;
constexpr std::size_t mostBytesOfLine = 256;

static_assert(KIVO_READING_OTHER == static_cast<int>(readid::FailureReason::other));
static_assert(KIVO_DOCUMENT_IDENTITY_CARD_TD2 == static_cast<int>(readid::DocumentType::identityCardTD2));

using Readings = c::Handles<kivo_reading>;

class HostSession final : public readid::ReadIDSession {
public:
    HostSession(const kivo_document_reader& reader, std::string id)
        : reader_{reader}
        , id_{std::move(id)} {}

    std::string sessionId() const override { return id_; }

    void finish(std::function<void()> completionHandler) override {
        if (reader_.finish != nullptr) {
            reader_.finish(reader_.user, c::textOf(id_));
        }
        if (completionHandler) {
            platform::services().mainQueue->async(std::move(completionHandler));
        }
    }

private:
    kivo_document_reader reader_;
    std::string id_;
};

/// What the host read, as far as it was read.
struct Read {
    std::string sessionId;
    readid::VIZResult page;

    bool hasPage() const { return !page.mrzData.mrz.lines.empty(); }
};

Read readOf(const kivo_document* document) {
    Read read;
    if (document == nullptr) {
        return read;
    }
    const auto given = c::structureOf(document, "document");
    read.sessionId = c::stringOf(given.session_id, "session_id");
    if (given.page_line_count > mostLines || (given.page_lines == nullptr && given.page_line_count != 0)) {
        throw c::Misuse{"page_lines is null, or there are more than 8"};
    }
    for (std::size_t i = 0; i < given.page_line_count; ++i) {
        read.page.mrzData.mrz.lines.push_back(c::stringOf(given.page_lines[i], "a line of page_lines"));
        if (read.page.mrzData.mrz.lines.back().size() > mostBytesOfLine) {
            throw c::Misuse{"a line of page_lines has more than 256 bytes"};
        }
    }
    return read;
}

readid::SuccessValue successOf(const Read& read, const kivo_document_reader& reader) {
    if (read.sessionId.empty()) {
        return read.hasPage() ? readid::SuccessValue{readid::VIZOnly{.viz = read.page}} : readid::UnknownSuccess{};
    }
    const readid::NFCResult chip{.readIDSession = std::make_shared<HostSession>(reader, read.sessionId)};
    return read.hasPage() ? readid::SuccessValue{readid::VIZNFC{.viz = read.page, .nfc = chip}}
                          : readid::NFCOnly{.nfc = chip};
}

/// Tells the SDK on the main queue, also when the host ends a reading while it begins.
void end(std::unique_ptr<kivo_reading> reading, readid::ReadIDResult result) {
    platform::services().mainQueue->async(
        [handler = std::move(reading->handler), result = std::move(result)] { handler(result); });
}

class HostDocumentReader final : public platform::ReadID {
public:
    explicit HostDocumentReader(const kivo_document_reader& reader)
        : reader_{reader} {}

    std::shared_ptr<readid::UIResources> makeUIResources() override { return std::make_shared<readid::UIResources>(); }

    std::expected<void, readid::ReadIDError> identify(const std::shared_ptr<platform::ViewController>& /*from*/,
                                                      platform::ModalPresentationStyle /*style*/,
                                                      const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow,
                                                      std::function<void(readid::ReadIDResult)> handler) override {
        std::vector<kivo_document_type> types(flow->allowedDocumentTypes.size());
        std::ranges::transform(flow->allowedDocumentTypes, types.begin(),
                               [](readid::DocumentType type) { return static_cast<kivo_document_type>(type); });
        const auto& pins = flow->applicationLevelEncryptionPins;
        std::vector<kivo_text> pinTexts(pins.size());
        std::ranges::transform(pins, pinTexts.begin(), c::textOf);
        const auto address = flow->baseUrl.value_or("");
        const kivo_reading_settings settings{
            .size = sizeof settings,
            .allowed_types = types.data(),
            .allowed_type_count = types.size(),
            .proxy_address = c::textOf(address),
            .access_key = c::textOf(flow->accessKey),
            .encryption_pins = pinTexts.data(),
            .encryption_pin_count = pinTexts.size(),
            .uses_pins = flow->shouldUsePinning,
            .skip_chip_after_attempts = flow->allowSkipReadingAfterAttempts,
            .instructions_play_count = flow->instructionsPlayCount,
            .shows_instructions_on_first_use_only = flow->shouldOnlyShowInstructionsOnFirstUse,
            .shows_document_selection = flow->shouldShowDocumentSelection,
            .shows_page_result = flow->shouldShowVIZResult,
            .shows_chip_result = flow->shouldShowNFCResult,
            .plays_shutter_sound = flow->shouldPlayShutterSound,
        };
        auto* const reading = Readings::shared().add({.reader = reader_, .handler = std::move(handler)});
        const auto start = reader_.start(reader_.user, &settings, reading);
        if (start == KIVO_READING_STARTED) {
            return {};
        }
        c::statusOf("start of the document reader", [&] { Readings::shared().take(reading, "reading"); });
        return std::unexpected{readid::ReadIDError{
            .kind = start == KIVO_READING_INVALID_CONFIGURATION ? readid::ReadIDError::Kind::invalidConfiguration
                    : start == KIVO_READING_NFC_NOT_SUPPORTED   ? readid::ReadIDError::Kind::nfcNotSupported
                                                                : readid::ReadIDError::Kind::other,
            .message = "The host's document reader has not begun."}};
    }

private:
    kivo_document_reader reader_;
};

} // namespace

extern "C" {

kivo_status kivo_document_reader_install(const kivo_document_reader* reader) {
    return c::statusOf(__func__, [&] {
        const auto given = c::structureOf(reader, "reader");
        c::notNull(given.start, "start");
        platform::Services services;
        services.readID = std::make_shared<HostDocumentReader>(given);
        platform::install(services);
    });
}

kivo_status kivo_reading_succeed(kivo_reading* reading, const kivo_document* document) {
    return c::statusOf(__func__, [&] {
        const auto read = readOf(document);
        auto ended = Readings::shared().take(reading, "reading");
        auto success = successOf(read, ended->reader);
        end(std::move(ended), std::move(success));
    });
}

kivo_status kivo_reading_fail(kivo_reading* reading, kivo_reading_failure reason, const kivo_document* document) {
    return c::statusOf(__func__, [&] {
        if (reason < KIVO_READING_BACKGROUND_TIMEOUT || reason > KIVO_READING_OTHER) {
            throw c::Misuse{"reason has no such value"};
        }
        auto read = readOf(document);
        readid::Failure failure{.failureReason = static_cast<readid::FailureReason>(reason), .viz = std::nullopt};
        if (read.hasPage()) {
            failure.viz = std::move(read.page);
        }
        end(Readings::shared().take(reading, "reading"), std::unexpected{std::move(failure)});
    });
}
}
