#include "platform/base/DiagnosticsRelay.hpp"

#include <kivo/platform/Services.hpp>

#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kivo::platform {
namespace {

std::atomic<const Services*> inForce = nullptr;
std::mutex changing;

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

/// Puts a set in force. Former sets stay, never to be destroyed: another thread may be reading one.
void enforce(Services services) {
    static auto& allSets = *new std::vector<std::unique_ptr<const Services>>;
    allSets.push_back(std::make_unique<const Services>(std::move(services)));
    inForce = allSets.back().get();
}

} // namespace

void install(Services services) {
    const std::scoped_lock lock{changing};
    const auto* former = inForce.load();
    // First, so that the default services are heard already while they are made.
    relayTo(services.diagnostics);
    auto next = former != nullptr ? *former : defaultServices();
    overlay(next, std::move(services));
    enforce(std::move(next));
}

const Services& services() {
    if (const auto* current = inForce.load()) {
        return *current;
    }
    const std::scoped_lock lock{changing};
    if (inForce.load() == nullptr) {
        enforce(defaultServices());
    }
    return *inForce.load();
}

} // namespace kivo::platform
