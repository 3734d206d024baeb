#include "files/Zone.hpp"
#include "files/ZoneLayout.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <utility>

namespace kivo::reader {
namespace {

constexpr std::size_t mostMiscounted = 6;
constexpr std::size_t longestLine = 64;

struct Likeness {
    char letter;
    char digit;
};

// The first row with a digit holds the letter that the digit is most often taken for.
constexpr std::array<Likeness, 12> likenesses{{{'O', '0'},
                                               {'I', '1'},
                                               {'Z', '2'},
                                               {'A', '4'},
                                               {'S', '5'},
                                               {'G', '6'},
                                               {'T', '7'},
                                               {'B', '8'},
                                               {'Q', '0'},
                                               {'D', '0'},
                                               {'U', '0'},
                                               {'L', '1'}}};

char asDigit(char seen) {
    const auto* found = std::ranges::find(likenesses, seen, &Likeness::letter);
    return found == likenesses.end() ? seen : found->digit;
}

char asLetter(char seen) {
    const auto* found = std::ranges::find(likenesses, seen, &Likeness::digit);
    return found == likenesses.end() ? seen : found->letter;
}

void replace(std::vector<std::string>& lines, const ZoneField& field, char (*as)(char)) {
    if (field.size > 0) {
        auto letters = std::span{lines[field.line]}.subspan(field.at, field.size);
        std::ranges::transform(letters, letters.begin(), as);
    }
}

// Makes the line as long as it should be, by the longest row of fillers in it: their number is what recognition most
// often gets wrong.
bool makeLong(std::string& line, std::size_t length) {
    constexpr std::size_t shortestRow = 3;
    if (line.size() == length) {
        return true;
    }
    std::size_t at = 0;
    std::size_t row = 0;
    for (std::size_t i = 0; i < line.size();) {
        const auto end = std::min(line.find_first_not_of('<', i), line.size());
        if (end - i > row) {
            at = i;
            row = end - i;
        }
        i = end == i ? i + 1 : end;
    }
    const auto missing = static_cast<std::ptrdiff_t>(length) - static_cast<std::ptrdiff_t>(line.size());
    if (row < shortestRow || static_cast<std::size_t>(std::abs(missing)) > mostMiscounted ||
        static_cast<std::ptrdiff_t>(row) + missing < 1) {
        return false;
    }
    if (missing > 0) {
        line.insert(at, static_cast<std::size_t>(missing), '<');
    } else {
        line.erase(at, static_cast<std::size_t>(-missing));
    }
    return true;
}

// Three fillers end the names. What stands behind them is fillers that were taken for letters.
void clearEnd(std::string& line, const ZoneField& names) {
    const auto end = line.find("<<<", names.at);
    if (end != std::string::npos) {
        std::fill(line.begin() + static_cast<std::ptrdiff_t>(end), line.end(), '<');
    }
}

// The field with one letter exchanged for the digit that it looks like, or the reverse, so that the check digit agrees;
// absent where two exchanges would do.
std::optional<std::string> agreeingField(const std::string& field, char digit) {
    if (checkDigit(field) == digit) {
        return field;
    }
    std::optional<std::string> found;
    for (std::size_t i = 0; i < field.size(); ++i) {
        for (const char other : {asDigit(field[i]), asLetter(field[i])}) {
            auto candidate = field;
            candidate[i] = other;
            if (checkDigit(candidate) == digit) {
                if (found) {
                    return std::nullopt;
                }
                found = std::move(candidate);
            }
        }
    }
    return found;
}

void repairNumber(const ZoneLayout& layout, std::vector<std::string>& lines) {
    auto rest = std::string{restOfNumber(layout, lines)};
    std::string number{layout.number.of(lines)};
    char digit = asDigit(layout.numberCheck.of(lines)[0]);
    if (rest.size() > 1) {
        digit = asDigit(rest.back());
        number += rest.substr(0, rest.size() - 1);
    } else {
        rest.clear();
    }
    const auto repaired = agreeingField(number, digit);
    if (!repaired) {
        return;
    }
    lines[layout.number.line].replace(layout.number.at, layout.number.size, *repaired, 0, layout.number.size);
    if (rest.empty()) {
        lines[layout.numberCheck.line][layout.numberCheck.at] = digit;
    } else {
        lines[layout.optional.line].replace(layout.optional.at, rest.size(),
                                            repaired->substr(layout.number.size) + digit);
    }
}

void repairOptional(const ZoneLayout& layout, std::vector<std::string>& lines) {
    if (layout.optionalCheck.size == 0) {
        return;
    }
    auto& digit = lines[layout.optionalCheck.line][layout.optionalCheck.at];
    digit = asDigit(digit);
    if (const auto repaired = agreeingField(std::string{layout.optional.of(lines)}, digit)) {
        lines[layout.optional.line].replace(layout.optional.at, layout.optional.size, *repaired);
    }
}

std::optional<Zone> repairedAs(const ZoneLayout& layout, std::vector<std::string> lines) {
    for (auto& line : lines) {
        if (line.size() > longestLine || !makeLong(line, layout.length)) {
            return std::nullopt;
        }
    }
    for (const auto& field :
         {layout.birth, layout.birthCheck, layout.expiry, layout.expiryCheck, layout.compositeCheck}) {
        replace(lines, field, asDigit);
    }
    for (const auto& field : {documentCodeField, layout.issuer, layout.nationality, layout.sex, layout.names}) {
        replace(lines, field, asLetter);
    }
    clearEnd(lines[layout.names.line], layout.names);
    if (auto zone = parsedZone(lines)) {
        return zone;
    }
    repairNumber(layout, lines);
    repairOptional(layout, lines);
    return parsedZone(lines);
}

} // namespace

std::optional<Zone> repairedZone(const std::vector<std::string>& lines) {
    if (auto zone = parsedZone(lines)) {
        return zone;
    }
    for (const auto& layout : zoneLayouts) {
        if (lines.size() == layout.lines) {
            if (auto zone = repairedAs(layout, lines)) {
                return zone;
            }
        }
    }
    return std::nullopt;
}

} // namespace kivo::reader
