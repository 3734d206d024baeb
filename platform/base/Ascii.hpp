#pragma once

namespace kivo::platform::ascii {

// The classes of ASCII characters, whatever the host's locale is. No other byte belongs to any of them.

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
    return lower(c) >= 'a' && lower(c) <= 'z';
}

constexpr bool isLetterOrDigit(char c) {
    return isLetter(c) || isDigit(c);
}

constexpr bool isHexDigit(char c) {
    return isDigit(c) || (lower(c) >= 'a' && lower(c) <= 'f');
}

} // namespace kivo::platform::ascii
