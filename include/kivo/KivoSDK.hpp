#pragma once

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/Deployment.hpp>
#include <kivo/Export.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/LogLevel.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kivo {

class KivoAPIProvider;

/// What a host without special wishes needs for a join.
struct JoinRequest {
    /// Becomes part of the device code that the join sends.
    std::string key{};
    /// The interface version, "14" to "18"; empty for the newest version.
    std::string version{};
    /// The code that the identity service has given to the person.
    std::string activationCode{};
    AcquisitionConfigValues config{};
    /// Where the identity service is. Without one, the deployment in force counts.
    std::optional<Deployment> deployment{};
};

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

    /// Installs the deployment, loads the session API and joins, in one call. Answers of the returned session come on
    /// the main queue (`KivoAPI::setAnswerQueue`), after this call has returned. Null for a version that `load`
    /// rejects; `response` then receives `INVALID_JOIN_SESSION`, on the main queue as well.
    static std::shared_ptr<KivoAPI> join(JoinRequest request, IdvCompletion response);

    /// The threshold of the SDK's log lines; `info` by default. The threshold is read once, with the first line
    /// that is logged: set the threshold before the first load. A few lines, such as those for a change of the network,
    /// are printed whatever the threshold. `LogLevel::off` silences everything, at once and at any time.
    static LogLevel logLevel();
    static void setLogLevel(LogLevel level);

    /// Takes what the SDK would print, in place of standard output; an empty sink gives the lines back to standard
    /// output. The sink is held until it is replaced, and may still be called by threads that are about to log.
    static void setLogSink(LogSink sink);

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
