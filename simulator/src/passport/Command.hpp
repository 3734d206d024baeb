#pragma once

#include "passport/Tlv.hpp"

#include <expected>

namespace kivo::simulator::chip {

/// The words with which a chip ends an answer (ISO 7816-4).
enum class Status : std::uint16_t {
    done = 0x9000,
    moreBytes = 0x6100,
    endOfFile = 0x6282,
    authenticationFailed = 0x6300,
    wrongLength = 0x6700,
    chainBroken = 0x6883,
    notAllowed = 0x6982,
    conditionsNotMet = 0x6985,
    securedObjectsMissing = 0x6987,
    securedObjectsWrong = 0x6988,
    wrongData = 0x6A80,
    fileNotFound = 0x6A82,
    wrongParameters = 0x6A86,
    dataNotFound = 0x6A88,
    offsetOutside = 0x6B00,
    unknownInstruction = 0x6D00,
    unknownClass = 0x6E00,
};

/// A command of ISO 7816-4, taken apart.
struct Command {
    std::uint8_t classByte = 0;
    std::uint8_t instruction = 0;
    std::uint8_t first = 0;
    std::uint8_t second = 0;
    Bytes data{};
    /// The most bytes that the answer may have; absent where none are asked for.
    std::optional<std::size_t> expected{};
    bool isExtended = false;

    /// Whether more commands of the chain follow.
    bool isChained() const { return (classByte & 0x10U) != 0; }

    bool isSecured() const { return (classByte & 0x0CU) == 0x0CU; }

    /// Both parameters as one number.
    std::uint16_t parameters() const { return static_cast<std::uint16_t>(first << 8U | second); }
};

/// The command in the bytes; the error is the status with which the chip refuses.
std::expected<Command, Status> commandFrom(View bytes, bool takesExtendedLength);

/// The answer to a command.
struct Answer {
    Bytes data{};
    Status status = Status::done;

    Answer() = default;

    // An answer without data is written as its status.
    Answer(Status onlyStatus) // NOLINT(google-explicit-constructor)
        : status{onlyStatus} {}

    Answer(Bytes bytes, Status end = Status::done)
        : data{std::move(bytes)}
        , status{end} {}

    /// The answer as it is sent.
    Bytes bytes() const { return joined({data, bigEndian(static_cast<std::uint16_t>(status), 2)}); }
};

} // namespace kivo::simulator::chip
