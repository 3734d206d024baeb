#include "tlv/ObjectIdentifier.hpp"

#include <algorithm>
#include <limits>

namespace kivo::reader {

std::string dottedIdentifier(ByteView value) {
    constexpr std::size_t mostNumbers = 32;
    std::string dotted;
    std::size_t numbers = 0;
    std::uint64_t number = 0;
    bool isWhole = false;
    for (const auto byte : value) {
        number = number << 7 | (byte & 0x7F);
        isWhole = (byte & 0x80) == 0;
        if (number > std::numeric_limits<std::uint32_t>::max() || numbers == mostNumbers) {
            return {};
        }
        if (!isWhole) {
            continue;
        }
        if (numbers == 0) { // holds the first two
            const auto first = std::min<std::uint64_t>(number / 40, 2);
            dotted = std::to_string(first) + "." + std::to_string(number - first * 40);
        } else {
            dotted += "." + std::to_string(number);
        }
        ++numbers;
        number = 0;
    }
    return isWhole ? dotted : std::string{};
}

} // namespace kivo::reader
