#pragma once

#include <algorithm>
#include <string_view>

namespace kivo::platform {

/// Whether two headers' names are the same.
inline bool sameName(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

/// A header's value without the white space around it.
inline std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view{} : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// Whether a text may be a header's name or a method.
inline bool isToken(std::string_view text) {
    using std::string_view_literals::operator""sv;
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               "!#$%&'*+-.^_`|~"sv.contains(c);
    });
}

} // namespace kivo::platform
