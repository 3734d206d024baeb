#pragma once

#include "reading/ChipReading.hpp"
#include "screens/ScreenText.hpp"

#include <expected>
#include <optional>
#include <string>

namespace kivo::reader {

/// The values as a person has typed them.
struct TypedValues {
    std::string documentNumber{};
    /// Day, month and year of four digits, in this order or reversed, with any signs between them or none.
    std::string dateOfBirth{};
    std::string dateOfExpiry{};
    std::string cardAccessNumber{};
};

/// What is wrong with a typed value: the sentence for the person.
struct TypingFault {
    std::string TypedValues::* value = nullptr;
    ScreenText sentence{};
};

/// The key to the chip. A card access number is enough by itself, and so are the three values.
std::expected<AccessKey, TypingFault> keyOf(const TypedValues& typed);

} // namespace kivo::reader
