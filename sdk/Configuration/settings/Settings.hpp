#pragma once

#include <kivo/LogLevel.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace kivo {

/// The settings of the process that the facade offers, on the lowest floor so that every floor can read them.
class Settings {
public:
    static Settings& shared();

    std::atomic<LogLevel> logLevel = LogLevel::info;

    std::string version() const;
    void setVersion(std::string version);
    std::string requestedSDKVersion() const;
    void setRequestedSDKVersion(std::string version);

    /// The host's receiver of log lines; null where lines go to standard output.
    std::shared_ptr<const LogSink> logSink() const;
    void setLogSink(LogSink sink);

private:
    mutable std::mutex mutex_;
    std::string version_ = "183";
    std::string requestedSDKVersion_;
    std::shared_ptr<const LogSink> logSink_;
};

} // namespace kivo
