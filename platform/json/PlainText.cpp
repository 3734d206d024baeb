#include "platform/json/PlainText.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace kivo::json {
namespace {

/// Sixteen bytes of a text. The compiler works on all sixteen in one vector instruction.
constexpr std::size_t width = 16;
using Bytes [[gnu::vector_size(width)]] = unsigned char;

constexpr Bytes places = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

/// The place of the first byte that is not zero; `width` when all are zero.
std::size_t firstIn(Bytes bytes) {
    std::size_t place = 0;
    for (const auto half : std::bit_cast<std::array<std::uint64_t, 2>>(bytes)) {
        const bool isLittle = std::endian::native == std::endian::little;
        const auto zeros = static_cast<std::size_t>(isLittle ? std::countr_zero(half) : std::countl_zero(half));
        place += zeros / 8;
        if (half != 0) {
            break;
        }
    }
    return place;
}

bool isAllAscii(Bytes bytes) {
    return firstIn(bytes & 0x80) == width;
}

} // namespace

PlainPart plainPart(std::string_view text) {
    Bytes all{};
    std::size_t at = 0;
    while (at + width <= text.size()) {
        Bytes bytes{};
        std::memcpy(&bytes, text.data() + at, width);
        const auto ends = (bytes == '"') | (bytes == '\\') | (bytes < ' ');
        const auto plain = firstIn(std::bit_cast<Bytes>(ends));
        at += plain;
        if (plain < width) {
            all |= bytes & std::bit_cast<Bytes>(places < static_cast<unsigned char>(plain));
            return {.length = at, .isAscii = isAllAscii(all)};
        }
        all |= bytes;
    }
    bool isAscii = isAllAscii(all);
    for (; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte == '"' || byte == '\\' || byte < ' ') {
            break;
        }
        isAscii = isAscii && byte < 0x80;
    }
    return {.length = at, .isAscii = isAscii};
}

void appendCharacter(std::string& to, std::uint32_t character) {
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    const auto rest = [&](unsigned shift) { return byte(0x80U | ((character >> shift) & 0x3FU)); };
    if (character < 0x80) {
        to += byte(character);
    } else if (character < 0x800) {
        to.append({byte(0xC0U | (character >> 6U)), rest(0)});
    } else if (character < 0x10000) {
        to.append({byte(0xE0U | (character >> 12U)), rest(6), rest(0)});
    } else {
        to.append({byte(0xF0U | (character >> 18U)), rest(12), rest(6), rest(0)});
    }
}

} // namespace kivo::json
