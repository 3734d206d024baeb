#pragma once

#include <kivo/Export.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/LogLevel.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace kivo {

class KivoAPIProvider;

/// The entry point of a host: settings for the whole process, and the session API of an interface version.
///
/// Call the functions on the main thread; the settings may be read from any thread.
class KIVO_EXPORT KivoSDK {
public:
    /// The session API for the interface version that the first two characters of `version` name ("14" to "18").
    ///
    /// One object per interface version exists in the process, and every load of that version returns it. `key`
    /// becomes part of the device code that a join sends; the key of a later load replaces the key. Null, and a line on
    /// standard output, for any other version.
    static std::shared_ptr<KivoAPI> load(std::string_view key, std::string_view version);

    /// The same session API in a new provider, for hosts that want plain result objects. Null as with `load`.
    static std::shared_ptr<KivoAPIProvider> loadForProvider(std::string_view key, std::string_view version);

    /// The threshold of the SDK's log lines; `info` by default. The threshold is read once, with the first line
    /// that is logged: set the threshold before the first load. An integer above `error` silences the log; a few
    /// lines, such as those for a change of the network, are printed all the same.
    static LogLevel logLevel();
    static void setLogLevel(LogLevel level);

    /// The SDK version text, "183" at first. The SDK itself does not use it.
    static std::string VERSION();
    static void setVERSION(std::string version);

    /// The version text of the most recent load, also of a rejected load; empty at first.
    static std::string requestedSDKVersion();
    static void setRequestedSDKVersion(std::string version);

    /// Whether screens enforce the session's retry limit; set by every successful join.
    static bool shouldApplyRetryLimit();
    static void setShouldApplyRetryLimit(bool apply);
};

} // namespace kivo
