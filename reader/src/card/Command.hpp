#pragma once

#include <kivo/reader/Card.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>

namespace kivo::reader {

/// A command of ISO 7816-4.
struct Command {
    std::uint8_t classByte = 0;
    std::uint8_t instruction = 0;
    std::uint8_t parameter1 = 0;
    std::uint8_t parameter2 = 0;
    Bytes data{};
    /// The most bytes that the answer may have: up to 65536, or none.
    std::size_t expected = 0;

    /// Whether the lengths need three bytes instead of one.
    bool isLong() const { return data.size() > 255 || expected > 256; }
};

/// The bytes of the command. At most 65535 bytes of data.
Bytes encoded(const Command& command);

/// The words of status that are told apart (ISO 7816-4, ICAO Doc 9303 part 10).
namespace status {
constexpr std::uint16_t success = 0x9000;
constexpr std::uint16_t endOfFile = 0x6282;
constexpr std::uint16_t wrongLength = 0x6700;
constexpr std::uint16_t conditionsNotSatisfied = 0x6985;
constexpr std::uint16_t noSecureMessaging = 0x6987;
constexpr std::uint16_t brokenSecureMessaging = 0x6988;
constexpr std::uint16_t securityNotSatisfied = 0x6982;
constexpr std::uint16_t notSupported = 0x6A81;
constexpr std::uint16_t notFound = 0x6A82;
constexpr std::uint16_t beyondEndOfFile = 0x6B00;
constexpr std::uint16_t unknownInstruction = 0x6D00;

/// Whether the chip says that authentication failed, with or without a number of attempts that are left.
constexpr bool isFailedAuthentication(std::uint16_t word) {
    return word == 0x6300 || (word & 0xFFF0) == 0x63C0;
}
} // namespace status

/// An answer: its data, and the word of status.
struct Answer {
    Bytes data{};
    std::uint16_t status = 0;
};

/// Sends a command, and fetches what the card keeps ready (61xx) or wants to be asked for with another length (6Cxx).
/// The answer has at most 65538 bytes. A card that still keeps bytes ready after `until` is `gone`.
std::expected<Answer, CardError> exchange(Card& card, ByteView command, std::chrono::steady_clock::time_point until);

} // namespace kivo::reader
