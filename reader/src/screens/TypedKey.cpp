#include "screens/TypedKey.hpp"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace kivo::reader {
namespace {

constexpr std::size_t longestNumber = 22;
constexpr std::size_t longestTyped = 64;
constexpr std::size_t digitsOfAccessNumber = 6;

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return c >= 'A' && c <= 'Z';
}

std::string digitsOf(std::string_view text) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits), isDigit);
    return digits;
}

/// The number as the zone has it: capital letters, and a filler for a hyphen. Absent for another sign.
std::optional<std::string> documentNumberIn(std::string_view typed) {
    std::string number;
    if (typed.size() > longestTyped) {
        return std::nullopt;
    }
    for (const char c : typed) {
        const char capital = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        if (isDigit(capital) || isLetter(capital)) {
            number += capital;
        } else if (c == '-' || c == '<') {
            number += '<';
        } else if (c != ' ') {
            return std::nullopt;
        }
    }
    number.erase(std::min(number.find_last_not_of('<') + 1, number.size()));
    return number.empty() || number.size() > longestNumber ? std::nullopt : std::optional{number};
}

/// Year, month and day with two digits each; absent for what is no day of the calendar.
std::optional<std::string> dateOf(int year, int month, int day) {
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    constexpr int firstYear = 1900;
    constexpr int lastYear = 2099;
    if (!date.ok() || year < firstYear || year > lastYear) {
        return std::nullopt;
    }
    char text[16];
    std::snprintf(text, sizeof text, "%02d%02d%02d", year % 100, month, day);
    return text;
}

/// The same of what a person has typed. A date with the day first is never also one with the year first, because no
/// month has the number 19 or 20.
std::optional<std::string> dateIn(std::string_view typed) {
    constexpr std::size_t digitsOfDate = 8;
    const auto digits = digitsOf(typed.substr(0, longestTyped));
    if (digits.size() != digitsOfDate) {
        return std::nullopt;
    }
    const auto number = [&](std::size_t first, std::size_t count) { return std::stoi(digits.substr(first, count)); };
    const auto dayFirst = dateOf(number(4, 4), number(2, 2), number(0, 2));
    return dayFirst ? dayFirst : dateOf(number(0, 4), number(4, 2), number(6, 2));
}

} // namespace

std::expected<AccessKey, TypingFault> keyOf(const TypedValues& typed) {
    AccessKey key;
    if (!typed.cardAccessNumber.empty()) {
        key.cardAccessNumber = digitsOf(typed.cardAccessNumber.substr(0, longestTyped));
        if (key.cardAccessNumber.size() != digitsOfAccessNumber) {
            return std::unexpected{
                TypingFault{&TypedValues::cardAccessNumber, "The card access number has six digits."}};
        }
        return key;
    }
    const auto number = documentNumberIn(typed.documentNumber);
    if (!number) {
        return std::unexpected{
            TypingFault{&TypedValues::documentNumber, "The document number has letters and digits only."}};
    }
    const auto birth = dateIn(typed.dateOfBirth);
    if (!birth) {
        return std::unexpected{
            TypingFault{&TypedValues::dateOfBirth, "The date of birth is no date. Type day, month and year."}};
    }
    const auto expiry = dateIn(typed.dateOfExpiry);
    if (!expiry) {
        return std::unexpected{
            TypingFault{&TypedValues::dateOfExpiry, "The date of expiry is no date. Type day, month and year."}};
    }
    key.documentNumber = *number;
    key.dateOfBirth = *birth;
    key.dateOfExpiry = *expiry;
    return key;
}

} // namespace kivo::reader
