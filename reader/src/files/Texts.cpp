#include "files/Texts.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

constexpr std::size_t longestText = 1024;

// The size of the character at the start of `text` in UTF-8: 0 where there is none.
std::size_t sizeOfCharacter(ByteView text) {
    const auto first = text[0];
    const std::size_t size = first < 0x80 ? 1 : first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (size == 0 || first > 0xF4 || size > text.size()) {
        return 0;
    }
    const auto isContinuation = [](std::uint8_t byte) { return (byte & 0xC0) == 0x80; };
    if (!std::ranges::all_of(text.subspan(1, size - 1), isContinuation)) {
        return 0;
    }
    // Forms that are longer than need be, halves of surrogate pairs, and what lies above the last plane.
    const bool isRefused = size > 2 && ((first == 0xE0 && text[1] < 0xA0) || (first == 0xED && text[1] > 0x9F) ||
                                        (first == 0xF0 && text[1] < 0x90) || (first == 0xF4 && text[1] > 0x8F));
    return isRefused ? 0 : size;
}

bool isControl(ByteView character) {
    return character[0] < 0x20 || character[0] == 0x7F || (character[0] == 0xC2 && character[1] < 0xA0);
}

} // namespace

std::string partedText(ByteView text) {
    std::string parted;
    std::size_t fillers = 0;
    while (!text.empty()) {
        const auto size = sizeOfCharacter(text);
        const auto character = text.first(std::max<std::size_t>(size, 1));
        text = text.subspan(character.size());
        if (character[0] == '<') {
            ++fillers;
            continue;
        }
        if (size > 0 && isControl(character)) {
            continue;
        }
        if (parted.size() + character.size() + 2 > longestText) {
            break;
        }
        if (fillers > 0 && !parted.empty()) {
            parted += fillers > 1 ? ", " : " ";
        }
        fillers = 0;
        if (size == 0) {
            parted += '?';
        } else {
            parted.append(character.begin(), character.end());
        }
    }
    return parted;
}

std::string longDate(ByteView date) {
    std::string digits;
    if (date.size() == 8) {
        digits.assign(date.begin(), date.end());
    } else if (date.size() == 4) {
        for (const auto byte : date) {
            digits += static_cast<char>('0' + (byte >> 4));
            digits += static_cast<char>('0' + (byte & 0x0F));
        }
    }
    return std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; }) ? digits : std::string{};
}

} // namespace kivo::reader
