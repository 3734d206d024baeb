#include "messaging/Channel.hpp"

namespace kivo::reader {
namespace {

constexpr std::uint8_t isContinued = 0x10;
constexpr std::size_t longestPlainPart = 255;
constexpr std::size_t longestProtectedPart = 223;

ChipFault faultOf(CardError error) {
    return error == CardError::stopped  ? ChipFault::stopped
           : error == CardError::broken ? ChipFault::broken
                                        : ChipFault::gone;
}

} // namespace

Channel::Channel(Card& card, Clock::time_point until, std::stop_token stop)
    : card_{card}
    , until_{until}
    , stop_{std::move(stop)}
    , capabilities_{card.carriesLongMessages() ? capabilitiesIn(card.historicalBytes()) : Capabilities{}} {}

void Channel::learn(ByteView atrInfo) {
    if (card_.carriesLongMessages()) {
        capabilities_ = capabilitiesWith(capabilities_, atrInfo);
    }
}

std::expected<Answer, ChipFault> Channel::broken() {
    isBroken_ = true;
    return std::unexpected{ChipFault::broken};
}

std::expected<Answer, ChipFault> Channel::send(const Command& command) {
    if (stop_.stop_requested()) {
        return std::unexpected{ChipFault::stopped};
    }
    if (Clock::now() > until_) {
        return std::unexpected{ChipFault::tookTooLong};
    }
    if (isBroken_) {
        return std::unexpected{ChipFault::broken};
    }
    const auto received = exchange(card_, encoded(messaging_ ? messaging_->protect(command) : command), until_);
    if (!received) {
        isBroken_ = true;
        return std::unexpected{Clock::now() > until_ ? ChipFault::tookTooLong : faultOf(received.error())};
    }
    if (!messaging_) {
        return *received;
    }
    auto answer = messaging_->open(*received);
    if (!answer) {
        return broken();
    }
    return *std::move(answer);
}

std::expected<Answer, ChipFault> Channel::sendInParts(const Command& command) {
    const auto longestPart = messaging_ ? longestProtectedPart : longestPlainPart;
    if (command.data.size() <= longestPart || capabilities_.takesLongMessages) {
        return send(command);
    }
    auto part = command;
    part.classByte |= isContinued;
    part.expected = 0;
    std::size_t at = 0;
    for (; command.data.size() - at > longestPart; at += longestPart) {
        const auto first = command.data.begin() + static_cast<std::ptrdiff_t>(at);
        part.data.assign(first, first + static_cast<std::ptrdiff_t>(longestPart));
        const auto answer = send(part);
        if (!answer || answer->status != status::success) {
            return answer;
        }
    }
    part.classByte = command.classByte;
    part.expected = command.expected;
    part.data.assign(command.data.begin() + static_cast<std::ptrdiff_t>(at), command.data.end());
    return send(part);
}

std::size_t Channel::longestData() const {
    const auto longest = capabilities_.takesLongMessages ? capabilities_.longestAnswer : std::size_t{256};
    return messaging_ ? messaging_->roomIn(longest) : longest;
}

} // namespace kivo::reader
