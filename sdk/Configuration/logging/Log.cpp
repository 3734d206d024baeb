#include "Configuration/logging/Log.hpp"

#include "Configuration/settings/Settings.hpp"
#include "platform/base/Process.hpp"

#include <cstdio>

namespace kivo::log {
namespace {

constexpr std::string_view separator = " \u2013 ";

std::string_view markerOf(LogLevel level) {
    switch (level) {
    case LogLevel::verbose:
        return "\u27A1\uFE0F";
    case LogLevel::debug:
        return "\u2753";
    case LogLevel::info:
        return "\u2139\uFE0F";
    case LogLevel::warning:
        return "\u26A0\uFE0F";
    case LogLevel::error:
        return "\u274C";
    case LogLevel::off:
        break;
    }
    return "";
}

std::string_view lastComponentOf(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

} // namespace

LogLevel threshold() {
    return platform::Process::current().part<LogLevel>([] { return new LogLevel{Settings::shared().logLevel}; });
}

std::string format(LogLevel level, std::string_view file, unsigned line, std::string_view function,
                   std::string_view message) {
    std::string text{markerOf(level)};
    text.append(separator).append(lastComponentOf(file)).append(":").append(std::to_string(line));
    text.append(separator).append(function).append(separator).append(message);
    return text;
}

std::string described(const std::vector<std::pair<std::string, std::string>>& texts) {
    std::string text = "[";
    for (const auto& [key, value] : texts) {
        text.append(text.size() > 1 ? ", " : "").append(key).append(": ").append(value);
    }
    return text + "]";
}

void print(std::string_view line, LogLevel level) {
    const auto& settings = Settings::shared();
    if (settings.logLevel == LogLevel::off) {
        return;
    }
    if (const auto sink = settings.logSink()) {
        (*sink)(level, line);
        return;
    }
    std::string whole{line};
    whole += '\n';
    // Each line is one call, so that the stream's lock keeps the lines of different threads apart.
    std::fwrite(whole.data(), 1, whole.size(), stdout);
    std::fflush(stdout);
}

void write(LogLevel level, std::string_view function, std::string_view message, const std::source_location& where) {
    print(format(level, where.file_name(), where.line(), function, message), level);
}

} // namespace kivo::log
