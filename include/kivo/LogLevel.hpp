#pragma once

#include <kivo/RawValue.hpp>

#include <functional>
#include <string_view>

namespace kivo {

/// The importance of a log line; a line is printed when its level is not below the threshold.
///
/// `off` is a threshold only: with it the SDK prints nothing at all. No line has this level, and `fromRawValue` does
/// not know it.
enum class LogLevel { verbose = 1, debug = 2, info = 3, warning = 4, error = 5, off = 6 };

/// Receives what the SDK would print: the line's level and its text without the line feed. Lines of the process itself,
/// such as those for a change of the network, have the level `info`. Called on any thread, also on several at once; the
/// sink must not throw.
using LogSink = std::function<void(LogLevel level, std::string_view line)>;

template <>
struct RawValues<LogLevel> {
    static constexpr int first = 1;
    static constexpr int last = 5;
};

} // namespace kivo
