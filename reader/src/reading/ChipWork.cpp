#include "reading/ChipWork.hpp"

#include "access/BasicAccess.hpp"
#include "access/Pace.hpp"
#include "files/DataGroups.hpp"
#include "files/Zone.hpp"
#include "reading/ChipProving.hpp"
#include "reading/FileReader.hpp"
#include "verification/PassiveAuthentication.hpp"

#include <algorithm>
#include <exception>

namespace kivo::reader {
namespace {

using Clock = Channel::Clock;
using Step = ChipProgress::Step;

constexpr std::chrono::seconds lookForReader{1};
constexpr std::size_t shortestNumber = 9; // in the zone, filled up

template <class T>
using Result = std::expected<T, ChipFault>;

ChipFailure failureOf(ChipFault fault) {
    switch (fault) {
    case ChipFault::gone:
        return ChipFailure::takenAway;
    case ChipFault::denied:
        return ChipFailure::accessDenied;
    case ChipFault::unsupported:
        return ChipFailure::unsupported;
    case ChipFault::broken:
        return ChipFailure::broken;
    case ChipFault::tookTooLong:
        return ChipFailure::tookTooLong;
    case ChipFault::stopped:
        return ChipFailure::stopped;
    }
    return ChipFailure::broken;
}

ChipFailure failureOf(CardError error) {
    switch (error) {
    case CardError::noReader:
        return ChipFailure::noReader;
    case CardError::noService:
        return ChipFailure::noService;
    case CardError::stopped:
        return ChipFailure::stopped;
    case CardError::gone:
        return ChipFailure::takenAway;
    case CardError::noCard:
    case CardError::broken:
        return ChipFailure::noChip;
    }
    return ChipFailure::broken;
}

int numberOf(DocumentFile group) {
    switch (group) {
    case DocumentFile::dg1:
        return 1;
    case DocumentFile::dg2:
        return 2;
    case DocumentFile::dg7:
        return 7;
    case DocumentFile::dg11:
        return 11;
    case DocumentFile::dg12:
        return 12;
    case DocumentFile::dg14:
        return 14;
    case DocumentFile::dg15:
        return 15;
    default:
        return 0;
    }
}

std::string zoneInformation(const AccessKey& key) {
    auto number = key.documentNumber;
    number.resize(std::max(number.size(), shortestNumber), '<');
    std::string information;
    for (const auto& field : {number, key.dateOfBirth, key.dateOfExpiry}) {
        information += field;
        information += checkDigit(field).value_or('<'); // a field with other characters opens no chip
    }
    wipe(number.data(), number.size());
    return information;
}

Password passwordOf(const AccessKey& key) {
    if (!key.cardAccessNumber.empty()) {
        return passwordOfNumber(key.cardAccessNumber);
    }
    auto information = zoneInformation(key);
    auto password = passwordOfZone(information);
    wipe(information.data(), information.size());
    return password;
}

// One chip, step by step.
class Work {
public:
    Work(Card& card, const ChipReadingOrder& order, std::stop_token stop, const ChipReading::Progress& progress)
        : channel_{card, Clock::now() + order.patienceForReading, std::move(stop)}
        , order_{order}
        , progress_{progress} {}

    Result<ChipDocument> run() {
        progress_({.step = Step::opening});
        for (const auto step : {&Work::open, &Work::readFiles, &Work::proveChip}) {
            if (const auto done = (this->*step)(); !done) {
                return std::unexpected{done.error()};
            }
        }
        const auto proof = document_.verdict.chipIsGenuine;
        document_.verdict = passiveVerdict(document_.files, order_.anchors.get(), std::chrono::system_clock::now());
        // The key of the proof counts only where it is signed.
        const bool isOfUnsignedKey = proof == Proof::proven && document_.verdict.dataIsUnchanged != Proof::proven;
        document_.verdict.chipIsGenuine = isOfUnsignedKey ? Proof::notTried : proof;
        return std::move(document_);
    }

private:
    Result<void> open() {
        const auto cardAccess = reader_.read(DocumentFile::cardAccess);
        if (!cardAccess) {
            return std::unexpected{cardAccess.error()};
        }
        const auto atrInfo = reader_.readAtrInfo();
        if (!atrInfo) {
            return std::unexpected{atrInfo.error()};
        }
        channel_.learn(*atrInfo);
        if (*cardAccess) {
            document_.files[DocumentFile::cardAccess] = **cardAccess;
            const auto infos = securityInfosIn(**cardAccess);
            if (!infos) {
                return std::unexpected{ChipFault::broken};
            }
            if (const auto* const pace = preferredPace(*infos)) {
                return openWithPace(*infos, *pace);
            }
        }
        return openWithBasicAccess();
    }

    Result<void> openWithPace(const SecurityInfos& infos, const PaceInfo& pace) {
        document_.access = ChipDocument::Access::pace;
        const bool isAmbiguous =
            std::ranges::any_of(infos.pace, [&](const auto& info) { return info.parameter != pace.parameter; });
        auto chip = openByPace(channel_, pace, isAmbiguous, passwordOf(order_.key));
        if (!chip) {
            return std::unexpected{chip.error()};
        }
        mappedChip_ = *std::move(chip);
        if (mappedChip_.group) {
            auto cardSecurity = reader_.read(DocumentFile::cardSecurity);
            if (!cardSecurity) {
                return std::unexpected{cardSecurity.error()};
            }
            if (*cardSecurity) {
                document_.files[DocumentFile::cardSecurity] = **std::move(cardSecurity);
            }
        }
        return selectApplication();
    }

    Result<void> openWithBasicAccess() {
        document_.access = ChipDocument::Access::basicAccessControl;
        if (const auto selected = selectApplication(); !selected) {
            return selected;
        }
        auto key = order_.key;
        key.cardAccessNumber.clear(); // which opens with PACE only
        return openByBasicAccess(channel_, passwordOf(key));
    }

    Result<void> selectApplication() {
        const auto answer = channel_.send({.instruction = 0xA4,
                                           .parameter1 = 0x04,
                                           .parameter2 = 0x0C,
                                           .data = {0xA0, 0x00, 0x00, 0x02, 0x47, 0x10, 0x01}});
        if (!answer) {
            return std::unexpected{answer.error()};
        }
        if (answer->status != status::success) {
            return std::unexpected{ChipFault::unsupported};
        }
        return {};
    }

    Result<bool> readFile(DocumentFile file) {
        auto content = reader_.read(file, [&](std::size_t count, std::size_t all) {
            progress_({.step = Step::reading, .file = file, .bytesRead = count, .bytesInAll = all});
        });
        if (!content) {
            return std::unexpected{content.error()};
        }
        if (!*content) {
            return false;
        }
        document_.files[file] = **std::move(content);
        return true;
    }

    Result<void> readFiles() {
        // The groups with the keys of the chip are read whether the list of EF.COM names them or not: nobody signs the
        // list.
        std::vector files{DocumentFile::com, DocumentFile::sod, DocumentFile::dg14};
        for (const auto group : order_.groups) {
            if (std::ranges::find(files, group) == files.end() && group != DocumentFile::dg15) {
                files.push_back(group);
            }
        }
        files.push_back(DocumentFile::dg15);
        for (const auto file : files) {
            if (!isListed(file) || document_.files.contains(file)) {
                continue;
            }
            const auto isRead = readFile(file);
            if (!isRead) {
                return std::unexpected{isRead.error()};
            }
            if (!*isRead && file == DocumentFile::sod) {
                return std::unexpected{ChipFault::unsupported};
            }
        }
        return {};
    }

    bool isListed(DocumentFile file) const {
        const auto com = document_.files.find(DocumentFile::com);
        if (file == DocumentFile::dg14 || file == DocumentFile::dg15 || com == document_.files.end()) {
            return true;
        }
        const auto list = comOf(com->second);
        return !list || file == DocumentFile::sod ||
               std::ranges::find(list->groups, numberOf(file)) != list->groups.end();
    }

    Result<void> proveChip() {
        progress_({.step = Step::provingChip});
        const auto proof = provenChip(channel_, document_.files, mappedChip_, order_.anchors.get());
        if (!proof) {
            return std::unexpected{proof.error()};
        }
        document_.verdict.chipIsGenuine = *proof;
        return {};
    }

    Channel channel_;
    FileReader reader_{channel_};
    const ChipReadingOrder& order_;
    const ChipReading::Progress& progress_;
    MappedChip mappedChip_{};
    ChipDocument document_{};
};

std::expected<std::unique_ptr<Card>, CardError> cardOf(CardSource& source, const ChipReadingOrder& order,
                                                       const std::stop_token& stop,
                                                       const ChipReading::Progress& progress) {
    const auto until = Clock::now() + order.patienceForCard;
    bool hasReader = true;
    while (true) {
        hasReader = !source.readers().empty();
        progress({.step = hasReader ? Step::waitingForCard : Step::waitingForReader});
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        // Without a reader the wait is short, so that the person learns when the reader is there.
        const auto patience = hasReader ? left : std::min<std::chrono::milliseconds>(left, lookForReader);
        auto card = source.waitForCard(std::max(patience, std::chrono::milliseconds{0}), stop);
        const bool isOver = hasReader || patience == left;
        if (card || isOver || (card.error() != CardError::noReader && card.error() != CardError::noCard)) {
            return card;
        }
    }
}

} // namespace

std::expected<ChipDocument, ChipFailure> documentRead(CardSource& source, const ChipReadingOrder& order,
                                                      std::stop_token stop, const ChipReading::Progress& progress) {
    try {
        const auto card = cardOf(source, order, stop, progress);
        if (!card) {
            return std::unexpected{failureOf(card.error())};
        }
        auto document = Work{**card, order, stop, progress}.run();
        if (!document) {
            return std::unexpected{failureOf(document.error())};
        }
        return *std::move(document);
    } catch (const std::exception&) {
        return std::unexpected{ChipFailure::broken};
    }
}

} // namespace kivo::reader
