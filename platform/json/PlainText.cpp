#include "platform/json/PlainText.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace kivo::json {
namespace {

/// Sixteen bytes of a text. The compiler works on all sixteen in one vector instruction.
constexpr std::size_t width = 16;
using Bytes [[gnu::vector_size(width)]] = unsigned char;

/// The highest bit of each byte, that of the first byte the lowest.
std::uint32_t highBits(Bytes bytes) {
#ifdef __SSE2__
    return static_cast<std::uint32_t>(_mm_movemask_epi8(std::bit_cast<__m128i>(bytes)));
#else
    // The product moves the highest bits of eight bytes, which are far enough apart, next to each other.
    constexpr std::uint64_t moves = 0x0002'0408'1020'4081;
    std::uint32_t bits = 0;
    unsigned place = 0;
    for (auto half : std::bit_cast<std::array<std::uint64_t, 2>>(bytes & 0x80)) {
        half = std::endian::native == std::endian::little ? half : std::byteswap(half);
        bits |= static_cast<std::uint32_t>(half * moves >> 56U) << place;
        place += 8;
    }
    return bits;
#endif
}

} // namespace

PlainPart plainPart(std::string_view text) {
    std::uint32_t others = 0; // is zero while all bytes are ASCII
    std::size_t at = 0;
    for (; at + width <= text.size(); at += width) {
        Bytes bytes{};
        std::memcpy(&bytes, text.data() + at, width);
        const auto ends = highBits(std::bit_cast<Bytes>((bytes == '"') | (bytes == '\\') | (bytes < ' ')));
        const auto high = highBits(bytes);
        if (ends != 0) {
            const auto plain = static_cast<unsigned>(std::countr_zero(ends));
            others |= high & ((1U << plain) - 1);
            return {.length = at + plain, .isAscii = others == 0};
        }
        others |= high;
    }
    for (; at < text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte == '"' || byte == '\\' || byte < ' ') {
            break;
        }
        others |= byte & 0x80U;
    }
    return {.length = at, .isAscii = others == 0};
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
