#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

namespace kivo::platform {

/// How large a person wants to read. Ordered from small to large; `large` is what a new phone is set to.
enum class ContentSizeCategory {
    extraSmall,
    small,
    medium,
    large,
    extraLarge,
    extraExtraLarge,
    extraExtraExtraLarge,
    accessibilityMedium,
    accessibilityLarge,
    accessibilityExtraLarge,
    accessibilityExtraExtraLarge,
    accessibilityExtraExtraExtraLarge,
};

} // namespace kivo::platform

namespace kivo {

template <>
struct RawValues<platform::ContentSizeCategory> {
    static constexpr int first = 0;
    static constexpr int last = 11;
};

} // namespace kivo
