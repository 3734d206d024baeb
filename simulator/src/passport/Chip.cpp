#include "passport/Chip.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo::simulator::chip {
namespace {

constexpr std::array<std::uint8_t, 7> applicationName{0xA0, 0x00, 0x00, 0x02, 0x47, 0x10, 0x01};
constexpr std::uint16_t masterFile = 0x3F00;
constexpr std::size_t shortAnswer = 0x100;
constexpr std::size_t statusSize = 2;

/// Absent where the bytes are not two.
std::optional<std::uint16_t> identifierIn(View bytes) {
    return bytes.size() == 2 ? std::optional{static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1])} : std::nullopt;
}

bool isCompleteObject(View data) {
    return !data.empty() && dataObjects(data).has_value();
}

} // namespace

Chip::Chip(std::shared_ptr<const ChipContents> contents)
    : contents_{std::move(contents)}
    , basicAccess_{contents_->secrets.zoneInformation}
    , pace_{contents_->secrets} {}

Bytes Chip::answer(View bytes) {
    const auto command = bytes.size() > longestMessage ? std::unexpected{Status::wrongLength}
                                                       : commandFrom(bytes, contents_->extendedLength);
    if (!command) {
        return Answer{command.error()}.bytes();
    }
    constexpr std::uint8_t getResponse = 0xC0;
    if (command->instruction == getResponse && !rest_.empty()) {
        return nextPart(*command).bytes();
    }
    rest_.clear();
    auto answer = command->isSecured() ? answerToSecured(*command) : answerTo(*command);
    if (nextChannel_) {
        channel_ = std::exchange(nextChannel_, std::nullopt);
    }
    return command->isExtended ? answer.bytes() : firstPart(std::move(answer), shortAnswer).bytes();
}

Answer Chip::answerTo(const Command& command) {
    // A command that is not secured ends the channel.
    closeChannel();
    isSecured_ = false;
    return collect(command);
}

Answer Chip::answerToSecured(const Command& command) {
    if (!channel_) {
        return Status::conditionsNotMet;
    }
    const auto opened = channel_->opened(command);
    if (!opened) {
        closeChannel();
        return opened.error();
    }
    isSecured_ = true;
    return channel_->secured(collect(*opened), (command.instruction & 1U) != 0);
}

Answer Chip::collect(const Command& command) {
    auto whole = command;
    if (auto former = std::exchange(chain_, std::nullopt)) {
        if (former->instruction != command.instruction || former->parameters() != command.parameters()) {
            return Status::chainBroken;
        }
        former->data.insert(former->data.end(), command.data.begin(), command.data.end());
        whole.data = std::move(former->data);
    }
    if (whole.data.size() > longestMessage) {
        return Status::wrongLength;
    }
    // The steps of PACE are chained, too, although each of them has an answer.
    const bool isStep = pace_.isUnderWay() && isCompleteObject(whole.data);
    if (command.isChained() && !isStep) {
        chain_ = std::move(whole);
        return Status::done;
    }
    return perform(whole);
}

Answer Chip::perform(const Command& command) {
    constexpr std::uint8_t generalAuthenticate = 0x86;
    if (command.instruction != generalAuthenticate) {
        pace_.abandon();
    }
    switch (command.instruction) {
    case 0xA4:
        return select(command);
    case 0xB0:
    case 0xB1:
        return read(command);
    case 0x84:
        if (!contents_->basicAccess || !isInApplication_) {
            return Status::conditionsNotMet;
        }
        return command.expected.value_or(0) == 8 ? basicAccess_.challenge(contents_->random)
                                                 : Answer{Status::wrongLength};
    case 0x82: {
        auto answer = basicAccess_.authenticate(command.data, contents_->random, nextChannel_);
        access_ = answer.status == Status::done ? Access::basic : access_;
        return answer;
    }
    case 0x22:
        return setEnvironment(command);
    case generalAuthenticate:
        return authenticateGenerally(command);
    case 0x88:
        if (!contents_->activeKey || access_ == Access::none || !isInApplication_) {
            return Status::conditionsNotMet;
        }
        return contents_->activeKey->answer(command.data, contents_->random);
    default:
        return Status::unknownInstruction;
    }
}

Answer Chip::select(const Command& command) {
    file_.reset();
    constexpr std::uint8_t byIdentifier = 0;
    constexpr std::uint8_t fileOfTheFolder = 2;
    constexpr std::uint8_t byName = 4;
    if (command.first == byName) {
        if (!std::ranges::equal(command.data, applicationName)) {
            return Status::fileNotFound;
        }
        isInApplication_ = true;
        return Status::done;
    }
    if (command.first != byIdentifier && command.first != fileOfTheFolder) {
        return Status::wrongParameters;
    }
    const auto identifier = identifierIn(command.data);
    if (command.first == byIdentifier && (command.data.empty() || identifier == masterFile)) {
        isInApplication_ = false;
        return Status::done;
    }
    if (!identifier) {
        return Status::wrongLength;
    }
    if (isInApplication_ && access_ == Access::none) {
        return Status::notAllowed;
    }
    if (!files().contains(*identifier)) {
        return Status::fileNotFound;
    }
    file_ = identifier;
    return Status::done;
}

Answer Chip::read(const Command& command) {
    constexpr std::uint8_t shortIdentifierMark = 0x80;
    std::size_t offset = command.parameters();
    const bool isOdd = command.instruction == 0xB1;
    if (!isOdd && (command.first & shortIdentifierMark) != 0) {
        const auto number = command.first & 0x1FU;
        const bool isAttributes = !isInApplication_ && number == 1;
        file_ = isAttributes ? attributesFile : static_cast<std::uint16_t>(0x0100U | number);
        offset = command.second;
    }
    if (isOdd) {
        const auto objects = dataObjects(command.data);
        const auto place = objects ? valueOf(*objects, 0x54) : std::nullopt;
        if (!place || place->empty() || place->size() > 3) {
            return Status::wrongData;
        }
        offset = 0;
        for (const auto byte : *place) {
            offset = offset << 8U | byte;
        }
    }
    return readFrom(command, offset);
}

Answer Chip::readFrom(const Command& command, std::size_t offset) {
    if (!file_ || !command.expected) {
        return file_ ? Status::wrongLength : Status::conditionsNotMet;
    }
    if (!isReadable(*file_)) {
        return Status::notAllowed;
    }
    const auto found = files().find(*file_);
    if (found == files().end()) {
        return Status::fileNotFound;
    }
    const View content = found->second;
    const bool isEndless = isInApplication_ && contents_->endlessFile == file_;
    if (!isEndless && offset >= content.size()) {
        return Status::offsetOutside;
    }
    const bool isOdd = command.instruction == 0xB1;
    auto asked = std::min(*command.expected, room(command));
    // The odd command gives its bytes in an object, whose tag and length count.
    asked -= isOdd ? std::min(asked, asked > 258 ? std::size_t{4} : asked > 129 ? std::size_t{3} : std::size_t{2}) : 0;
    Bytes bytes;
    if (isEndless) {
        for (std::size_t each = 0; each < asked; ++each) {
            bytes.push_back(content[(offset + each) % content.size()]);
        }
    } else {
        bytes = copied(content.subspan(offset, std::min(asked, content.size() - offset)));
    }
    const bool asksForAll = *command.expected == shortAnswer || *command.expected == 0x10000;
    const auto status = bytes.size() < asked && !asksForAll ? Status::endOfFile : Status::done;
    return {isOdd ? object(0x53, bytes) : std::move(bytes), status};
}

Answer Chip::setEnvironment(const Command& command) {
    constexpr std::uint16_t forPace = 0xC1A4;
    constexpr std::uint16_t forChipAuthentication = 0x41A4;
    constexpr std::uint16_t withKey = 0x41A6;
    if (command.parameters() == forPace) {
        return isSecured_ ? Status::conditionsNotMet : pace_.begin(command.data);
    }
    if (!contents_->agreementKey || access_ == Access::none) {
        return Status::conditionsNotMet;
    }
    const auto objects = dataObjects(command.data);
    if (!objects) {
        return Status::wrongData;
    }
    if (command.parameters() == forChipAuthentication) {
        const auto identifier = valueOf(*objects, 0x80);
        awaitsChipKey_ = identifier && areEqual(*identifier, contents_->agreementKey->identifier());
        return awaitsChipKey_ ? Status::done : Status::wrongData;
    }
    if (command.parameters() == withKey && contents_->agreementKey->offer().cipher == ChipCipher::tripleDes) {
        return authenticateChip(valueOf(*objects, 0x91));
    }
    return Status::wrongParameters;
}

Answer Chip::authenticateGenerally(const Command& command) {
    if (!std::exchange(awaitsChipKey_, false)) {
        auto answer = pace_.step(command.data, contents_->random, nextChannel_);
        access_ = nextChannel_ ? Access::pace : access_;
        return answer;
    }
    const auto outer = dataObjects(command.data);
    const auto inner = outer ? valueOf(*outer, 0x7C) : std::nullopt;
    const auto objects = inner ? dataObjects(*inner) : std::nullopt;
    auto answer = authenticateChip(objects ? valueOf(*objects, 0x80) : std::nullopt);
    return answer.status == Status::done ? Answer{object(0x7C, View{})} : answer;
}

Answer Chip::authenticateChip(std::optional<View> theirKey) {
    const auto shared = theirKey ? contents_->agreementKey->sharedWith(*theirKey) : std::nullopt;
    if (!shared) {
        return Status::wrongData;
    }
    nextChannel_.emplace(contents_->agreementKey->offer().cipher, *shared);
    return Status::done;
}

Answer Chip::nextPart(const Command& command) {
    Answer answer;
    answer.data = std::exchange(rest_, {});
    return firstPart(std::move(answer), command.expected.value_or(shortAnswer));
}

/// What goes into one answer; the rest waits for GET RESPONSE.
Answer Chip::firstPart(Answer answer, std::size_t most) {
    if (answer.data.size() <= most) {
        return answer;
    }
    rest_.assign(answer.data.begin() + static_cast<std::ptrdiff_t>(most), answer.data.end());
    answer.data.resize(most);
    const auto left = rest_.size() < shortAnswer ? rest_.size() : 0;
    answer.status = static_cast<Status>(std::to_underlying(Status::moreBytes) | left);
    return answer;
}

const FileSystem& Chip::files() const {
    return isInApplication_ ? contents_->application : contents_->card;
}

bool Chip::isReadable(std::uint16_t file) const {
    if (isInApplication_) {
        return access_ != Access::none;
    }
    return file != securityFile || access_ == Access::pace;
}

std::size_t Chip::room(const Command& command) const {
    const std::size_t most = command.isExtended ? longestMessage - statusSize : shortAnswer;
    return isSecured_ ? channel_->room(most) : most;
}

void Chip::closeChannel() {
    channel_.reset();
    access_ = Access::none;
}

} // namespace kivo::simulator::chip
