#include "c/AssumedNetwork.hpp"
#include "c/Values.hpp"
#include "platform/c/Arguments.hpp"

#include <kivo/AcquisitionObject.hpp>
#include <kivo/IdvEvents.hpp>
#include <kivo/KivoSDK.hpp>
#include <kivo/SdkVersions.hpp>
#include <kivo/platform/Services.hpp>

#include <string>
#include <string_view>
#include <utility>

namespace {

using namespace kivo;

// An enumeration of C++ that grows must grow here, too.
static_assert(KIVO_EVENT_OCR_SCAN == RawValues<IdvEvents>::last);
static_assert(KIVO_OBJECT_OCR_SCAN == RawValues<AcquisitionObject>::last);
static_assert(KIVO_FAILURE_OVERTAKEN == RawValues<FailureKind>::last);
static_assert(KIVO_ENVIRONMENT_DEV == RawValues<SDKEnv>::last);
static_assert(KIVO_LOG_VERBOSE == rawValue(LogLevel::verbose) && KIVO_LOG_OFF == rawValue(LogLevel::off));

class HostDiagnostics final : public platform::Diagnostics {
public:
    HostDiagnostics(kivo_report_sink sink, void* user)
        : sink_{sink}
        , user_{user} {}

    void report(std::string_view component, std::string_view text) override {
        const std::string terminatedComponent{component};
        const std::string terminatedText{text};
        sink_(user_, c::textOf(terminatedComponent), c::textOf(terminatedText));
    }

private:
    kivo_report_sink sink_;
    void* user_;
};

} // namespace

extern "C" {

kivo_text kivo_version() {
    return KIVO_TEXT(KIVO_SDK_VERSION);
}

kivo_text kivo_interface_version(size_t index) {
    const auto all = SdkVersions::all();
    return c::textOf(index < all.size() ? all[index] : "");
}

kivo_text kivo_event_name(kivo_event event) {
    return c::textOf(IdvEventsHelper::eventName(static_cast<IdvEvents>(event)));
}

kivo_text kivo_object_name(kivo_object object) {
    return c::textOf(AcquisitionObjectHelper::acquisitionObjectName(static_cast<AcquisitionObject>(object)));
}

kivo_text kivo_failure_kind_name(kivo_failure_kind kind) {
    return c::textOf(name(static_cast<FailureKind>(kind)));
}

kivo_text kivo_environment_name(kivo_environment environment) {
    return c::textOf(SDKEnvHelper::environmentName(static_cast<SDKEnv>(environment)));
}

kivo_log_level kivo_log_threshold() {
    return c::resultOf(__func__, KIVO_LOG_INFO, [] { return static_cast<kivo_log_level>(KivoSDK::logLevel()); });
}

kivo_status kivo_log_set_threshold(kivo_log_level level) {
    return c::statusOf(__func__, [&] {
        KivoSDK::setLogLevel(level == KIVO_LOG_OFF ? LogLevel::off : c::enumeratorOf<LogLevel>(level, "level"));
    });
}

kivo_status kivo_log_set_sink(kivo_log_sink sink, void* user, kivo_release release) {
    c::UserData data{user, release};
    return c::statusOf(__func__, [&] {
        if (sink == nullptr) {
            KivoSDK::setLogSink({});
            return;
        }
        KivoSDK::setLogSink([sink, held = std::move(data).shared()](LogLevel level, std::string_view line) {
            const std::string terminated{line};
            sink(held->pointer(), static_cast<kivo_log_level>(level), c::textOf(terminated));
        });
    });
}

kivo_status kivo_reports_set_sink(kivo_report_sink sink, void* user) {
    return c::statusOf(__func__, [&] {
        platform::Services services;
        services.diagnostics = std::make_shared<HostDiagnostics>(c::notNull(sink, "sink"), user);
        platform::install(services);
    });
}

kivo_status kivo_deployment_install(const kivo_deployment* deployment) {
    return c::statusOf(__func__, [&] { Deployment::install(c::deploymentOf(deployment)); });
}

kivo_string* kivo_deployment_join_page(kivo_environment environment) {
    return c::resultOf(__func__, static_cast<kivo_string*>(nullptr), [&] {
        const auto known = c::enumeratorOf<SDKEnv>(environment, "environment");
        return c::handOver(Deployment::current().joinPage(known));
    });
}

kivo_status kivo_network_assume() {
    return c::statusOf(__func__, [] {
        platform::Services services;
        services.reachability = c::assumedNetwork();
        platform::install(services);
    });
}
}
