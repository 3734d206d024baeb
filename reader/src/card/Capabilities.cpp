#include "card/Capabilities.hpp"

#include "tlv/Tlv.hpp"

#include <algorithm>
#include <bit>

namespace kivo::reader {
namespace {

// Readers and their drivers carry at least as much, and more saves nothing that a person would notice.
constexpr std::size_t longestUnlessTold = 4096;
constexpr std::size_t longestOfAll = 65536;
constexpr std::uint8_t longLengths = 0x40;

void learnCard(Capabilities& known, ByteView cardCapabilities) {
    if (cardCapabilities.size() == 3 && (cardCapabilities[2] & longLengths) != 0 && !known.takesLongMessages) {
        known = {.takesLongMessages = true, .longestCommand = longestUnlessTold, .longestAnswer = longestUnlessTold};
    }
}

std::size_t numberIn(ByteView bytes) {
    std::size_t number = 0;
    for (const auto byte : bytes.first(std::min<std::size_t>(bytes.size(), 4))) {
        number = number << 8 | byte;
    }
    return number;
}

} // namespace

Bytes historicalBytesOf(ByteView answerToReset) {
    if (answerToReset.size() < 2) {
        return {};
    }
    const std::size_t count = answerToReset[1] & 0x0FU;
    std::size_t at = 2;
    unsigned present = answerToReset[1] >> 4U; // of TA, TB, TC and TD, the lowest bit for TA
    while (present != 0) {
        const bool isFollowed = (present & 0x08U) != 0;
        at += static_cast<std::size_t>(std::popcount(present));
        if (at > answerToReset.size()) {
            return {};
        }
        present = isFollowed ? answerToReset[at - 1] >> 4U : 0;
    }
    if (answerToReset.size() - at < count) {
        return {};
    }
    const auto bytes = answerToReset.subspan(at, count);
    return {bytes.begin(), bytes.end()};
}

Capabilities capabilitiesIn(ByteView historicalBytes) {
    constexpr std::uint8_t compactObjects = 0x80;
    constexpr std::uint8_t compactObjectsAndStatus = 0x00;
    constexpr unsigned cardCapabilities = 7;
    Capabilities known;
    if (historicalBytes.empty() ||
        (historicalBytes[0] != compactObjects && historicalBytes[0] != compactObjectsAndStatus)) {
        return known;
    }
    auto rest = historicalBytes.subspan(1);
    while (!rest.empty()) {
        const auto tag = rest[0] >> 4U;
        const std::size_t size = rest[0] & 0x0FU;
        if (rest.size() - 1 < size) {
            break;
        }
        if (tag == cardCapabilities) {
            learnCard(known, rest.subspan(1, size));
        }
        rest = rest.subspan(1 + size);
    }
    return known;
}

Capabilities capabilitiesWith(Capabilities known, ByteView atrInfo) {
    if (const auto capabilities = valueOf(atrInfo, 0x47)) {
        learnCard(known, *capabilities);
    }
    const auto lengths = valueOf(atrInfo, 0x7F66);
    const auto numbers = lengths ? allTlv(*lengths) : std::nullopt;
    if (numbers && numbers->size() == 2 && (*numbers)[0].tag == 0x02 && (*numbers)[1].tag == 0x02) {
        const auto command = std::min(numberIn((*numbers)[0].value), longestOfAll - 1);
        const auto answer = std::min(numberIn((*numbers)[1].value), longestOfAll);
        if (command > 255 && answer > 256) {
            known = {.takesLongMessages = true, .longestCommand = command, .longestAnswer = answer};
        }
    }
    return known;
}

} // namespace kivo::reader
