#include "support/HostFixture.hpp"

#include <kivo/platform/LinuxServices.hpp>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace kivo::test {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view hostInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>com.example.host</string>
<key>CFBundleShortVersionString</key><string>2.1</string>
</dict></plist>)";

struct Waiting {
    std::mutex mutex;
    std::condition_variable changed;
    Answered answered;
};

} // namespace

bool Answered::succeeded(IdvEvents event) const {
    return times == 1 && outcome && (*outcome)->responseType() == event;
}

ResponseCode Answered::code() const {
    return times == 1 && !outcome ? outcome.error() : static_cast<ResponseCode>(-1);
}

simulator::IdentityServiceConfiguration HostFixture::defaultConfiguration() {
    simulator::IdentityServiceConfiguration configuration;
    configuration.retryLimit = 3;
    return configuration;
}

HostFixture::HostFixture(simulator::IdentityServiceConfiguration configuration)
    : service{std::move(configuration)} {
    folder.write("Host.bundle/Info.plist", hostInformation);
    services = platform::linuxServices({.mainBundle = folder.path() / "Host.bundle",
                                        .dataFolder = folder.path() / "data",
                                        .trustedCertificates = service.trustedCertificates()});
    services.mainQueue = mainLoop;
    services.reachability = network;
    services.device = device;
    services.workspace = workspace;
    platform::install(services);
    const auto page = service.joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});
}

Answered HostFixture::answerTo(const Call& call) {
    const auto waiting = std::make_shared<Waiting>();
    call([waiting](IdvOutcome outcome) {
        const std::scoped_lock lock{waiting->mutex};
        ++waiting->answered.times;
        waiting->answered.outcome = std::move(outcome);
        waiting->answered.thread = std::this_thread::get_id();
        waiting->changed.notify_all();
    });
    std::unique_lock lock{waiting->mutex};
    waiting->changed.wait_for(lock, 30s, [&] { return waiting->answered.times > 0; });
    waiting->changed.wait_for(lock, 5ms, [&] { return waiting->answered.times > 1; });
    return waiting->answered;
}

Answered HostFixture::join(KivoAPI& session, const std::string& code) {
    return answerTo([&](IdvCompletion response) { session.join(code, config(), std::move(response)); });
}

std::vector<simulator::RecordedRequest> HostFixture::requestsTo(simulator::Endpoint endpoint) const {
    auto requests = service.requests();
    std::erase_if(requests, [&](const auto& request) { return request.endpoint != endpoint; });
    return requests;
}

std::shared_ptr<AcquisitionConfig> HostFixture::config(SDKEnv environment) {
    return std::make_shared<AcquisitionConfig>(environment, "PASSPORT", "P6M", "0.8", "UTO", "face");
}

} // namespace kivo::test
