#pragma once

#include <optional>

namespace kivo {

/// The integers that stand for the values of enumeration `E`, as `first` and `last`.
template <class E>
struct RawValues;

/// The value of enumeration `E` whose integer is `raw`; absent when there is none.
template <class E>
constexpr std::optional<E> fromRawValue(int raw) {
    if (raw < RawValues<E>::first || raw > RawValues<E>::last) {
        return std::nullopt;
    }
    return static_cast<E>(raw);
}

/// The integer behind a value.
template <class E>
constexpr int rawValue(E value) {
    return static_cast<int>(value);
}

} // namespace kivo
