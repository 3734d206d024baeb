#pragma once

#include "files/Document.hpp"
#include "verification/Verdict.hpp"

#include <kivo/reader/Card.hpp>

#include <chrono>
#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kivo::reader {

class TrustAnchors;

/// What opens a chip: the three values of the page, or the card access number. Personal data: never logged.
struct AccessKey {
    std::string documentNumber{};
    /// Six digits each: year, month, day.
    std::string dateOfBirth{};
    std::string dateOfExpiry{};
    /// The number on the face of a card; empty where the values above open the chip.
    std::string cardAccessNumber{};
};

/// The order for one reading.
struct ChipReadingOrder {
    AccessKey key{};
    /// The groups to read where the document has them; COM and SOD are always read.
    std::vector<DocumentFile> groups{};
    /// The authorities that the host trusts; may be null.
    std::shared_ptr<const TrustAnchors> anchors{};
    /// How long a card may be waited for, and how long the reading may take after that.
    std::chrono::milliseconds patienceForCard{std::chrono::seconds{60}};
    std::chrono::milliseconds patienceForReading{std::chrono::seconds{60}};
};

/// Where a reading stands.
struct ChipProgress {
    enum class Step { waitingForReader, waitingForCard, opening, reading, provingChip };
    Step step = Step::waitingForCard;
    /// The file under way, and its bytes; only while `reading`.
    DocumentFile file = DocumentFile::com;
    std::size_t bytesRead = 0;
    std::size_t bytesInAll = 0;
};

/// What a reading gave.
struct ChipDocument {
    enum class Access { basicAccessControl, pace };
    Files files{};
    Access access = Access::basicAccessControl;
    Verdict verdict{};
};

/// Why a reading gave nothing.
enum class ChipFailure {
    noReader,
    noService,
    /// No card came in time, or what was laid on the reader is no card with a chip that answers.
    noChip,
    /// The chip refuses the key: the values of the page are not this document's.
    accessDenied,
    takenAway,
    /// The chip has no travel document, or asks for what this reader cannot do.
    unsupported,
    tookTooLong,
    /// The chip's answers are broken.
    broken,
    stopped,
};

/// One reading of a chip, on a thread of its own.
class ChipReading {
public:
    using Progress = std::function<void(const ChipProgress&)>;
    using End = std::function<void(std::expected<ChipDocument, ChipFailure>)>;

    /// Starts the reading. `progress` and then once `end` are called on the main queue. The end comes also after
    /// `stop`.
    static std::shared_ptr<ChipReading> start(std::shared_ptr<CardSource> source, ChipReadingOrder order,
                                              Progress progress, End end);
    virtual ~ChipReading() = default;

    /// Gives the reading up; the end is `stopped` unless another end is due already.
    virtual void stop() = 0;
};

} // namespace kivo::reader
