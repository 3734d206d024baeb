#pragma once

#include <kivo/RawValue.hpp>

namespace kivo::platform {

/// The appearance that a person has chosen: dark letters on light ground, or light letters on dark ground.
enum class UserInterfaceStyle { light, dark };

} // namespace kivo::platform

namespace kivo {

template <>
struct RawValues<platform::UserInterfaceStyle> {
    static constexpr int first = 0;
    static constexpr int last = 1;
};

} // namespace kivo
