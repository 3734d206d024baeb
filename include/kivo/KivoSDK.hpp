#pragma once

#include <kivo/Export.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/LogLevel.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo {

class KivoAPIProvider;

/// Where a host begins: settings for the whole process, and the session API of an interface version.
///
/// Everything here is meant for the main thread; the settings may be read from any thread.
class KIVO_EXPORT KivoSDK {
public:
    /// The session API for the interface version that the first two characters of `version` name ("14" to "18").
    ///
    /// One object per interface version exists in the process, and every load of that version returns it. `key`
    /// becomes part of the device code that a join sends; a later load's key takes its place. Null, and a line on
    /// standard output, for any other version.
    static std::shared_ptr<KivoAPI> load(std::string_view key, std::string_view version);

    /// The same session API in a new provider, for hosts that want plain result objects. Null as with `load`.
    static std::shared_ptr<KivoAPIProvider> loadForProvider(std::string_view key, std::string_view version);

    /// The threshold of the SDK's log lines; `info` by default. It is taken once, with the first line that is
    /// logged: set it before the first load. An integer above `error` silences it; a few bare
    /// lines, such as that the network has changed, are printed all the same.
    static LogLevel logLevel();
    static void setLogLevel(LogLevel level);

    /// The SDK version text, "183" at first. The SDK itself does not use it.
    static std::string VERSION();
    static void setVERSION(std::string version);

    /// The version text of the most recent load, also of one that was rejected; empty at first.
    static std::string requestedSDKVersion();
    static void setRequestedSDKVersion(std::string version);

    /// Whether screens enforce the session's retry limit; set by every successful join.
    static bool shouldApplyRetryLimit();
    static void setShouldApplyRetryLimit(bool apply);
};

} // namespace kivo
