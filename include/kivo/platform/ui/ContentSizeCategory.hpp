#pragma once

#include <kivo/Export.hpp>
#include <kivo/RawValue.hpp>

namespace kivo::platform {

/// The reading size that a person has chosen, from small to large. A new phone has the size `large`.
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
