#pragma once

#include <kivo/platform/ReadID.hpp>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::reader {

/// The machine-readable zone of a document (ICAO Doc 9303 parts 3 to 6), taken apart. Personal data: never logged.
/// Fillers at the end of a field are gone from all members but `lines`.
struct Zone {
    platform::readid::DocumentType type = platform::readid::DocumentType::passport;
    /// Two lines of 44 (passport) or 36 letters (TD2), or three of 30 (TD1).
    std::vector<std::string> lines{};
    /// "P", "ID", "AC" and the like.
    std::string documentCode{};
    /// Three letters of the state; one to three for some.
    std::string issuer{};
    std::string nationality{};
    /// The whole number, where the zone continues a long one among the optional data. A filler between two letters
    /// stays, because the chip's key is made of the number with it.
    std::string documentNumber{};
    /// Years, months and days as six digits, as they are printed; fillers where a part is unknown.
    std::string dateOfBirth{};
    std::string dateOfExpiry{};
    /// "M", "F", or empty.
    std::string sex{};
    /// The names, their parts apart by one space. A long name is cut off, as in the zone.
    std::string primaryIdentifier{};
    std::string secondaryIdentifier{};
    /// What the state adds, its parts apart by one space.
    std::string optionalData{};
};

/// The zone that the lines hold, where all its check digits agree and each field has the letters that it may have;
/// absent otherwise, and for visas, which have no chip and no check digit over the whole.
std::optional<Zone> parsedZone(const std::vector<std::string>& lines);

/// The same after the usual mistakes of recognition were undone, as far as the check digits confirm the repair: letters
/// that look alike (O for 0, I for 1, B for 8 and the reverse) where only digits or only letters stand, the number of
/// fillers in a row, and letters seen among fillers. One letter of a document number is exchanged, and only where no
/// other exchange agrees with the check digit, too.
std::optional<Zone> repairedZone(const std::vector<std::string>& lines);

/// The check digit of a field; absent where a character is none of a zone's.
std::optional<char> checkDigit(std::string_view field);

} // namespace kivo::reader
