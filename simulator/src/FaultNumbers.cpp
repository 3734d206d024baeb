#include "FaultNumbers.hpp"

#include <charconv>
#include <system_error>

namespace kivo::simulator {

using namespace std::chrono_literals;

std::optional<std::uint64_t> numberFrom(std::string_view text, std::uint64_t most) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() && number <= most ? std::optional{number}
                                                                                      : std::nullopt;
}

std::optional<std::chrono::milliseconds> timeFrom(std::string_view text) {
    constexpr std::chrono::milliseconds longestTime = 10min;
    const bool isInMilliseconds = text.ends_with("ms");
    if (!text.ends_with('s')) {
        return std::nullopt;
    }
    text.remove_suffix(isInMilliseconds ? 2 : 1);
    const auto unit = isInMilliseconds ? 1ms : 1000ms;
    const auto number = numberFrom(text, static_cast<std::uint64_t>(longestTime / unit));
    return number ? std::optional{static_cast<std::int64_t>(*number) * unit} : std::nullopt;
}

} // namespace kivo::simulator
