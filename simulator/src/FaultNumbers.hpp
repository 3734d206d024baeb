#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kivo::simulator {

/// The number that the whole text writes; absent for another text, and for a number above `most`.
std::optional<std::uint64_t> numberFrom(std::string_view text, std::uint64_t most);

/// The time that a text such as "250ms" or "2s" writes; absent for another text, and for a time above ten minutes.
std::optional<std::chrono::milliseconds> timeFrom(std::string_view text);

} // namespace kivo::simulator
