#pragma once

#include <kivo/platform/Text.hpp>

#include <cstddef>
#include <string_view>

namespace kivo {

/// Whether a person has typed all of an activation code. Which code is a good one, the identity service knows.
inline bool isCompleteActivationCode(std::string_view code) {
    constexpr std::size_t length = 6;
    return text::characterCount(code) == length;
}

} // namespace kivo
