#pragma once

#include <kivo/LogLevel.hpp>

#include <concepts>
#include <source_location>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace kivo::log {

/// The threshold of this process, taken from the settings when first used.
LogLevel threshold();

/// Whether lines of this level are printed.
inline bool enabled(LogLevel level) {
    return threshold() <= level;
}

/// A log line as it is printed, without the line feed.
std::string format(LogLevel level, std::string_view file, unsigned line, std::string_view function,
                   std::string_view message);

/// Texts under their keys as they appear in log lines: [key: value, key: value].
std::string described(const std::vector<std::pair<std::string, std::string>>& texts);

/// Hands a line in one piece to the host's sink, or prints the line on standard output. The threshold does not matter,
/// except that `LogLevel::off` drops every line.
void print(std::string_view line, LogLevel level = LogLevel::info);

/// Prints a log line, regardless of the threshold.
void write(LogLevel level, std::string_view function, std::string_view message, const std::source_location& where);

/// Logs `message`: a text, or a function that returns the text and is called only if the line is printed.
///
/// `function` is the operation's name with its argument labels, such as "commit(response:)".
template <class Message>
void line(LogLevel level, std::string_view function, Message&& message,
          const std::source_location& where = std::source_location::current()) {
    if (!enabled(level)) [[likely]] {
        return;
    }
    if constexpr (std::invocable<Message>) {
        write(level, function, std::forward<Message>(message)(), where);
    } else {
        write(level, function, std::forward<Message>(message), where);
    }
}

template <class Message>
void debug(std::string_view function, Message&& message,
           const std::source_location& where = std::source_location::current()) {
    line(LogLevel::debug, function, std::forward<Message>(message), where);
}

template <class Message>
void info(std::string_view function, Message&& message,
          const std::source_location& where = std::source_location::current()) {
    line(LogLevel::info, function, std::forward<Message>(message), where);
}

template <class Message>
void error(std::string_view function, Message&& message,
           const std::source_location& where = std::source_location::current()) {
    line(LogLevel::error, function, std::forward<Message>(message), where);
}

} // namespace kivo::log
