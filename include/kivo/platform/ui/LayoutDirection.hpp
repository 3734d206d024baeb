#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

#include <string_view>

namespace kivo::platform {

/// The direction in which a language is read, and so the side on which a row begins.
enum class LayoutDirection { leftToRight, rightToLeft };

/// The direction of a language, such as "ar", "de" or "he_IL"; left to right for an unknown language.
KIVO_EXPORT LayoutDirection layoutDirectionOf(std::string_view language);

} // namespace kivo::platform

namespace kivo {

template <>
struct RawValues<platform::LayoutDirection> {
    static constexpr int first = 0;
    static constexpr int last = 1;
};

} // namespace kivo
