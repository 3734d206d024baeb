#include "passport/ByteProtocol.hpp"

#include <algorithm>
#include <utility>

namespace kivo::simulator::chip {
namespace {

constexpr std::size_t headSize = 5;
constexpr std::size_t statusSize = 2;
constexpr std::size_t longestAnswer = 256;
constexpr std::uint8_t getResponse = 0xC0;
constexpr std::uint8_t wrongLength = 0x67;
constexpr std::uint8_t moreBytes = 0x61;
constexpr std::uint8_t otherLength = 0x6C;

/// Status that tells a number of bytes, of which 256 is written 0.
Bytes statusOf(std::uint8_t kind, std::size_t count) {
    return {kind, static_cast<std::uint8_t>(std::min(count, longestAnswer))};
}

} // namespace

Bytes ByteProtocol::answer(View command, const Chip& chip) {
    if (command.size() < headSize || (command.size() > headSize && command.size() != headSize + command[4])) {
        return {wrongLength, 0};
    }
    const auto asked = command[4] == 0 ? longestAnswer : std::size_t{command[4]};
    if (command[1] == getResponse && !kept_.empty()) {
        return kept(asked);
    }
    kept_.clear();
    const bool hasData = command.size() > headSize;
    auto answer = chip(hasData ? joined({command, Bytes{0}}) : copied(command));
    const auto size = answer.size() - std::min(answer.size(), statusSize);
    if (size == 0) {
        return answer;
    }
    if (hasData) {
        kept_ = std::move(answer);
        return statusOf(moreBytes, size);
    }
    return size < asked ? statusOf(otherLength, size) : answer;
}

Bytes ByteProtocol::kept(std::size_t asked) {
    const auto size = kept_.size() - statusSize;
    if (asked > size) {
        return statusOf(otherLength, size);
    }
    if (asked == size) {
        return std::exchange(kept_, {});
    }
    const View whole = kept_;
    auto part = joined({whole.first(asked), statusOf(moreBytes, size - asked)});
    kept_ = copied(whole.subspan(asked));
    return part;
}

} // namespace kivo::simulator::chip
