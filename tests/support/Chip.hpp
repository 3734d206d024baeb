#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Commands of a chip as texts of hexadecimal digits.
namespace kivo::test {

inline std::string hex(const std::vector<std::uint8_t>& bytes) {
    constexpr auto digits = "0123456789abcdef";
    std::string text;
    for (const auto byte : bytes) {
        text += {digits[byte >> 4U], digits[byte & 0xFU]};
    }
    return text;
}

inline std::vector<std::uint8_t> fromHex(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t each = 0; each + 1 < text.size(); each += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(text.substr(each, 2), nullptr, 16)));
    }
    return bytes;
}

/// The length of the digits' bytes in one byte, and the digits.
inline std::string lengthed(const std::string& digits) {
    return hex({static_cast<std::uint8_t>(digits.size() / 2)}) + digits;
}

/// A data object of at most 255 bytes.
inline std::string object(const std::string& tag, const std::string& value) {
    return tag + (value.size() >= 256 ? "81" : "") + lengthed(value);
}

/// SELECT of the application with a travel document's files.
inline const std::string selectApplication = "00a4040c07a0000002471001";

template <class Chip>
std::string answerTo(Chip& chip, const std::string& command) {
    return hex(chip.transmit(fromHex(command)));
}

} // namespace kivo::test
