#include "platform/base/DiagnosticsRelay.hpp"
#include "platform/base/Process.hpp"

#include <kivo/platform/Services.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

/// The set in force and the sets before, which stay: another thread may be reading one.
struct Installed {
    std::atomic<const Services*> inForce = nullptr;
    std::mutex changing;
    std::vector<std::unique_ptr<const Services>> all;

    void enforce(Services services) {
        all.push_back(std::make_unique<const Services>(std::move(services)));
        inForce = all.back().get();
    }
};

Installed& installed() {
    return Process::current().part<Installed>([] { return new Installed; });
}

void overlay(Services& base, Services services) {
    const auto take = [](auto& mine, auto& theirs) {
        if (theirs) {
            mine = std::move(theirs);
        }
    };
    take(base.mainQueue, services.mainQueue);
    take(base.urlSessions, services.urlSessions);
    take(base.trust, services.trust);
    take(base.keychain, services.keychain);
    take(base.reachability, services.reachability);
    take(base.bundles, services.bundles);
    take(base.device, services.device);
    take(base.workspace, services.workspace);
    take(base.diagnostics, services.diagnostics);
    take(base.fonts, services.fonts);
    take(base.camera, services.camera);
    take(base.faceTec, services.faceTec);
    take(base.readID, services.readID);
}

} // namespace

void install(Services services) {
    auto& current = installed();
    const std::scoped_lock lock{current.changing};
    const auto* former = current.inForce.load();
    // First, so that the default services are heard already while they are made.
    relayTo(services.diagnostics);
    auto next = former != nullptr ? *former : defaultServices();
    overlay(next, std::move(services));
    current.enforce(std::move(next));
}

const Services& services() {
    auto& current = installed();
    if (const auto* inForce = current.inForce.load()) {
        return *inForce;
    }
    const std::scoped_lock lock{current.changing};
    if (current.inForce.load() == nullptr) {
        current.enforce(defaultServices());
    }
    return *current.inForce.load();
}

} // namespace kivo::platform
