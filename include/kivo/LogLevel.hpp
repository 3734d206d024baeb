#pragma once

#include <kivo/RawValue.hpp>

namespace kivo {

/// The importance of a log line; a line is printed when its level is not below the threshold.
enum class LogLevel { verbose = 1, debug = 2, info = 3, warning = 4, error = 5 };

template <>
struct RawValues<LogLevel> {
    static constexpr int first = 1;
    static constexpr int last = 5;
};

} // namespace kivo
