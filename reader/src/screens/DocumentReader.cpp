#include "screens/Walk.hpp"
#include "verification/TrustAnchors.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/reader/CardSources.hpp>
#include <kivo/reader/DocumentReader.hpp>

#include <utility>

namespace kivo::reader {

namespace readid = platform::readid;

class DocumentReader::State {
public:
    explicit State(DocumentReaderOptions options)
        : options_{std::move(options)} {
        if (!options_.cards) {
            options_.cards = systemCards();
        }
    }

    const DocumentReaderOptions& options() const { return options_; }

    bool isReading() const {
        const auto walk = walk_.lock();
        return walk && walk->isUnderWay();
    }

    /// Whether the next reading begins with the instructions.
    bool instructs(const readid::NFCWithAccessControlFlow& flow) const {
        return flow.instructionsPlayCount > 0 && !(flow.shouldOnlyShowInstructionsOnFirstUse && wasUsed_);
    }

    void begin(const std::shared_ptr<Walk>& walk) {
        walk_ = walk;
        wasUsed_ = true;
    }

    ReaderParts parts(std::shared_ptr<const TrustAnchors> anchors) const {
        ReaderParts parts;
        parts.readChip = [cards = options_.cards](ChipReadingOrder order, auto progress, auto end) {
            return ChipReading::start(cards, std::move(order), std::move(progress), std::move(end));
        };
        if (options_.usesCamera) {
            parts.makeZoneReader = [] { return ZoneReader::make(); };
        }
        parts.patienceForPerson = options_.patienceForPerson;
        using enum DocumentFile;
        parts.order.groups = {dg1, dg2, dg14, dg15};
        if (options_.readsFurtherData) {
            parts.order.groups.insert(parts.order.groups.end(), {dg7, dg11, dg12});
        }
        parts.order.anchors = std::move(anchors);
        parts.order.patienceForCard = options_.patienceForCard;
        parts.order.patienceForReading = options_.patienceForReading;
        return parts;
    }

private:
    DocumentReaderOptions options_;
    std::weak_ptr<Walk> walk_;
    bool wasUsed_ = false;
};

DocumentReader::DocumentReader(DocumentReaderOptions options)
    : state_{std::make_unique<State>(std::move(options))} {}

DocumentReader::~DocumentReader() = default;

std::shared_ptr<readid::UIResources> DocumentReader::makeUIResources() {
    return usualResources();
}

std::expected<void, readid::ReadIDError> DocumentReader::identify(
    const std::shared_ptr<platform::ViewController>& from, platform::ModalPresentationStyle modalPresentationStyle,
    const std::shared_ptr<readid::NFCWithAccessControlFlow>& flow, std::function<void(readid::ReadIDResult)> handler) {
    using enum readid::ReadIDError::Kind;
    const auto refusal = [](readid::ReadIDError::Kind kind, std::string message) {
        return std::unexpected{readid::ReadIDError{.kind = kind, .message = std::move(message)}};
    };
    if (auto fault = sendingFault(*flow); !fault.empty()) {
        return refusal(invalidConfiguration, std::move(fault));
    }
    if (state_->isReading()) {
        return refusal(other, "another reading is under way");
    }
    std::shared_ptr<const TrustAnchors> anchors;
    if (const auto& folder = state_->options().countryCertificates; !folder.empty()) {
        auto read = trustAnchorsIn(folder);
        if (!read) {
            return refusal(invalidConfiguration, std::move(read.error()));
        }
        anchors = std::move(*read);
    }
    if (!state_->options().cards->isAvailable()) {
        constexpr const char* remedy = "the service of the card readers does not run; install and start pcscd";
        // The host learns the kind alone, and the message of this kind is not logged.
        platform::services().diagnostics->report("document reader", remedy);
        return refusal(nfcNotSupported, remedy);
    }
    const auto walk = std::make_shared<Walk>(*flow, state_->parts(std::move(anchors)), std::move(handler));
    const bool withInstructions = state_->instructs(*flow);
    state_->begin(walk);
    walk->begin(*from, modalPresentationStyle, withInstructions);
    return {};
}

} // namespace kivo::reader
