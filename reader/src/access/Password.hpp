#pragma once

#include "crypto/Cryptography.hpp"

#include <string_view>

namespace kivo::reader {

/// What is printed on the document and opens the chip.
struct Password {
    /// The kinds, with the numbers by which the chip knows them.
    enum class Kind : std::uint8_t { machineReadableZone = 1, cardAccessNumber = 2 };
    Kind kind = Kind::machineReadableZone;
    /// The bytes from which keys are derived: the digest of the zone's information, or the number's digits.
    Secret value{};
};

/// The password of document number, date of birth and date of expiry, each followed by its check digit.
Password passwordOfZone(std::string_view information);

Password passwordOfNumber(std::string_view digits);

} // namespace kivo::reader
