#pragma once

#include <kivo/RawValue.hpp>

namespace kivo {

/// The form in which a person types the activation code.
enum class CodeTextFieldStyle {
    single = 0, ///< One text field for the whole code.
    boxed = 1,  ///< Six boxes of one character each.
};

template <>
struct RawValues<CodeTextFieldStyle> {
    static constexpr int first = 0;
    static constexpr int last = 1;
};

} // namespace kivo
