#include "Configuration/settings/Settings.hpp"

#include "platform/base/Process.hpp"

#include <utility>

namespace kivo {

Settings& Settings::shared() {
    return platform::Process::current().part<Settings>([] { return new Settings; });
}

std::string Settings::version() const {
    const std::scoped_lock lock{mutex_};
    return version_;
}

void Settings::setVersion(std::string version) {
    const std::scoped_lock lock{mutex_};
    version_ = std::move(version);
}

std::string Settings::requestedSDKVersion() const {
    const std::scoped_lock lock{mutex_};
    return requestedSDKVersion_;
}

void Settings::setRequestedSDKVersion(std::string version) {
    const std::scoped_lock lock{mutex_};
    requestedSDKVersion_ = std::move(version);
}

std::shared_ptr<const LogSink> Settings::logSink() const {
    const std::scoped_lock lock{mutex_};
    return logSink_;
}

void Settings::setLogSink(LogSink sink) {
    auto shared = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    const std::scoped_lock lock{mutex_};
    std::swap(logSink_, shared);
}

} // namespace kivo
