#pragma once

#include <optional>

namespace kivo {

/// The value of enumeration `E` whose integer is `raw`; absent when there is none.
///
/// Offered for every integer-backed enumeration of the SDK.
template <class E>
std::optional<E> fromRawValue(int raw);

/// The integer behind a value.
template <class E>
constexpr int rawValue(E value) {
    return static_cast<int>(value);
}

} // namespace kivo
