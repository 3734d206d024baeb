#pragma once

#include <kivo/platform/ReadID.hpp>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::reader {

/// Where a field of a zone stands.
struct ZoneField {
    std::size_t line = 0;
    std::size_t at = 0;
    std::size_t size = 0;

    std::string_view of(const std::vector<std::string>& lines) const {
        return std::string_view{lines[line]}.substr(at, size);
    }
};

/// The places of the fields in one of the three sizes of zones.
struct ZoneLayout {
    platform::readid::DocumentType type;
    std::size_t lines;
    std::size_t length;
    ZoneField issuer;
    ZoneField number;
    ZoneField numberCheck;
    ZoneField birth;
    ZoneField birthCheck;
    ZoneField sex;
    ZoneField expiry;
    ZoneField expiryCheck;
    ZoneField nationality;
    /// The optional data into which a long document number runs on; in passports with a check digit of its own.
    ZoneField optional;
    ZoneField optionalCheck;
    /// More optional data, in TD1 only.
    ZoneField furtherOptional;
    ZoneField compositeCheck;
    ZoneField names;
    /// What the composite check digit is made of, in this order.
    std::array<ZoneField, 4> composite;
};

inline constexpr ZoneField documentCodeField{.line = 0, .at = 0, .size = 2};

inline constexpr std::array<ZoneLayout, 3> zoneLayouts{{
    {.type = platform::readid::DocumentType::passport,
     .lines = 2,
     .length = 44,
     .issuer = {.line = 0, .at = 2, .size = 3},
     .number = {.line = 1, .at = 0, .size = 9},
     .numberCheck = {.line = 1, .at = 9, .size = 1},
     .birth = {.line = 1, .at = 13, .size = 6},
     .birthCheck = {.line = 1, .at = 19, .size = 1},
     .sex = {.line = 1, .at = 20, .size = 1},
     .expiry = {.line = 1, .at = 21, .size = 6},
     .expiryCheck = {.line = 1, .at = 27, .size = 1},
     .nationality = {.line = 1, .at = 10, .size = 3},
     .optional = {.line = 1, .at = 28, .size = 14},
     .optionalCheck = {.line = 1, .at = 42, .size = 1},
     .furtherOptional = {},
     .compositeCheck = {.line = 1, .at = 43, .size = 1},
     .names = {.line = 0, .at = 5, .size = 39},
     .composite =
         {{{.line = 1, .at = 0, .size = 10}, {.line = 1, .at = 13, .size = 7}, {.line = 1, .at = 21, .size = 22}, {}}}},
    {.type = platform::readid::DocumentType::identityCardTD2,
     .lines = 2,
     .length = 36,
     .issuer = {.line = 0, .at = 2, .size = 3},
     .number = {.line = 1, .at = 0, .size = 9},
     .numberCheck = {.line = 1, .at = 9, .size = 1},
     .birth = {.line = 1, .at = 13, .size = 6},
     .birthCheck = {.line = 1, .at = 19, .size = 1},
     .sex = {.line = 1, .at = 20, .size = 1},
     .expiry = {.line = 1, .at = 21, .size = 6},
     .expiryCheck = {.line = 1, .at = 27, .size = 1},
     .nationality = {.line = 1, .at = 10, .size = 3},
     .optional = {.line = 1, .at = 28, .size = 7},
     .optionalCheck = {},
     .furtherOptional = {},
     .compositeCheck = {.line = 1, .at = 35, .size = 1},
     .names = {.line = 0, .at = 5, .size = 31},
     .composite =
         {{{.line = 1, .at = 0, .size = 10}, {.line = 1, .at = 13, .size = 7}, {.line = 1, .at = 21, .size = 14}, {}}}},
    {.type = platform::readid::DocumentType::identityCardTD1,
     .lines = 3,
     .length = 30,
     .issuer = {.line = 0, .at = 2, .size = 3},
     .number = {.line = 0, .at = 5, .size = 9},
     .numberCheck = {.line = 0, .at = 14, .size = 1},
     .birth = {.line = 1, .at = 0, .size = 6},
     .birthCheck = {.line = 1, .at = 6, .size = 1},
     .sex = {.line = 1, .at = 7, .size = 1},
     .expiry = {.line = 1, .at = 8, .size = 6},
     .expiryCheck = {.line = 1, .at = 14, .size = 1},
     .nationality = {.line = 1, .at = 15, .size = 3},
     .optional = {.line = 0, .at = 15, .size = 15},
     .optionalCheck = {},
     .furtherOptional = {.line = 1, .at = 18, .size = 11},
     .compositeCheck = {.line = 1, .at = 29, .size = 1},
     .names = {.line = 2, .at = 0, .size = 30},
     .composite = {{{.line = 0, .at = 5, .size = 25},
                    {.line = 1, .at = 0, .size = 7},
                    {.line = 1, .at = 8, .size = 7},
                    {.line = 1, .at = 18, .size = 11}}}},
}};

/// The part of the optional data in which a long document number ends, check digit included; empty where the number is
/// not long. A long number has a filler for its check digit, and runs on up to the next filler.
inline std::string_view restOfNumber(const ZoneLayout& layout, const std::vector<std::string>& lines) {
    if (layout.optionalCheck.size != 0 || layout.numberCheck.of(lines) != "<") {
        return {};
    }
    const auto optional = layout.optional.of(lines);
    return optional.substr(0, optional.find('<'));
}

} // namespace kivo::reader
