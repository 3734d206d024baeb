#include "files/Zone.hpp"

#include "files/ZoneLayout.hpp"

#include <algorithm>
#include <utility>

namespace kivo::reader {
namespace {

constexpr char filler = '<';

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

bool isUpper(char letter) {
    return letter >= 'A' && letter <= 'Z';
}

bool isName(std::string_view field) {
    return std::ranges::all_of(field, [](char letter) { return isUpper(letter) || letter == filler; });
}

std::string_view withoutEnd(std::string_view field) {
    return field.substr(0, field.find_last_not_of(filler) + 1);
}

// The parts between fillers, with one space between two.
std::string spaced(std::string_view field) {
    std::string text;
    for (const char letter : field) {
        if (letter != filler) {
            text += letter;
        } else if (!text.empty() && text.back() != ' ') {
            text += ' ';
        }
    }
    if (text.ends_with(' ')) {
        text.pop_back();
    }
    return text;
}

// A part of a date: two digits from `least` to `most`, or two fillers where the part is unknown.
bool isPart(std::string_view part, int least, int most) {
    if (part == "<<") {
        return true;
    }
    if (!isDigit(part[0]) || !isDigit(part[1])) {
        return false;
    }
    const int value = (part[0] - '0') * 10 + (part[1] - '0');
    return value >= least && value <= most;
}

bool isDate(std::string_view date) {
    return isPart(date.substr(0, 2), 0, 99) && isPart(date.substr(2, 2), 1, 12) && isPart(date.substr(4, 2), 1, 31);
}

bool agrees(std::string_view field, std::string_view digit) {
    return digit.size() == 1 && checkDigit(field) == digit[0];
}

// Absent where the check digit of the number does not agree.
std::optional<std::string> numberIn(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    const auto number = layout.number.of(lines);
    if (const auto rest = restOfNumber(layout, lines); rest.size() > 1) {
        const auto whole = std::string{number} + std::string{rest.substr(0, rest.size() - 1)};
        return agrees(whole, rest.substr(rest.size() - 1)) ? std::optional{whole} : std::nullopt;
    }
    const auto letters = withoutEnd(number);
    if (letters.empty() || !agrees(number, layout.numberCheck.of(lines))) {
        return std::nullopt;
    }
    return std::string{letters};
}

bool compositeAgrees(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    std::string all;
    for (const auto& field : layout.composite) {
        all += field.of(lines);
    }
    return agrees(all, layout.compositeCheck.of(lines));
}

// Empty optional data may have a filler for its check digit.
bool optionalAgrees(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    if (layout.optionalCheck.size == 0) {
        return true;
    }
    const auto optional = layout.optional.of(lines);
    const auto digit = layout.optionalCheck.of(lines);
    return agrees(optional, digit) || (digit == "<" && withoutEnd(optional).empty());
}

std::string optionalIn(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    std::string optional{layout.optional.of(lines).substr(restOfNumber(layout, lines).size())};
    if (layout.furtherOptional.size > 0) {
        optional += filler;
        optional += layout.furtherOptional.of(lines);
    }
    return spaced(optional);
}

bool fieldsAreWellFormed(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    const auto code = documentCodeField.of(lines);
    const auto names = layout.names.of(lines);
    const auto sex = layout.sex.of(lines);
    return isName(code) && isUpper(code[0]) && code[0] != 'V' && isName(layout.issuer.of(lines)) &&
           isUpper(layout.issuer.of(lines)[0]) && isName(layout.nationality.of(lines)) && isName(names) &&
           isUpper(names[0]) && isDate(layout.birth.of(lines)) && isDate(layout.expiry.of(lines)) &&
           (sex == "M" || sex == "F" || sex == "X" || sex == "<");
}

std::optional<Zone> parsedAs(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    if (!fieldsAreWellFormed(layout, lines) || !agrees(layout.birth.of(lines), layout.birthCheck.of(lines)) ||
        !agrees(layout.expiry.of(lines), layout.expiryCheck.of(lines)) || !optionalAgrees(layout, lines) ||
        !compositeAgrees(layout, lines)) {
        return std::nullopt;
    }
    auto number = numberIn(layout, lines);
    if (!number) {
        return std::nullopt;
    }
    const auto names = layout.names.of(lines);
    const auto end = names.find("<<");
    const auto sex = layout.sex.of(lines);
    return Zone{.type = layout.type,
                .lines = lines,
                .documentCode = std::string{withoutEnd(documentCodeField.of(lines))},
                .issuer = std::string{withoutEnd(layout.issuer.of(lines))},
                .nationality = std::string{withoutEnd(layout.nationality.of(lines))},
                .documentNumber = *std::move(number),
                .dateOfBirth = std::string{layout.birth.of(lines)},
                .dateOfExpiry = std::string{layout.expiry.of(lines)},
                .sex = std::string{sex == "M" || sex == "F" ? sex : std::string_view{}},
                .primaryIdentifier = spaced(names.substr(0, end)),
                .secondaryIdentifier = end == std::string_view::npos ? std::string{} : spaced(names.substr(end)),
                .optionalData = optionalIn(layout, lines)};
}

} // namespace

std::optional<char> checkDigit(std::string_view field) {
    constexpr std::array weights{7, 3, 1};
    unsigned sum = 0;
    for (std::size_t i = 0; i < field.size(); ++i) {
        const char letter = field[i];
        int value = 0;
        if (isDigit(letter)) {
            value = letter - '0';
        } else if (isUpper(letter)) {
            value = letter - 'A' + 10;
        } else if (letter != filler) {
            return std::nullopt;
        }
        sum += static_cast<unsigned>(value * weights[i % weights.size()]);
    }
    return static_cast<char>('0' + sum % 10);
}

std::optional<Zone> parsedZone(const std::vector<std::string>& lines) {
    for (const auto& layout : zoneLayouts) {
        if (lines.size() == layout.lines &&
            std::ranges::all_of(lines, [&](const auto& line) { return line.size() == layout.length; })) {
            return parsedAs(layout, lines);
        }
    }
    return std::nullopt;
}

} // namespace kivo::reader
