#include <kivo/platform/Services.hpp>

#include <atomic>
#include <mutex>
#include <utility>

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
    take(base.keychain, services.keychain);
    take(base.reachability, services.reachability);
    take(base.bundles, services.bundles);
    take(base.device, services.device);
    take(base.workspace, services.workspace);
    take(base.diagnostics, services.diagnostics);
    take(base.fonts, services.fonts);
}

} // namespace

void install(Services services) {
    const std::scoped_lock lock{changing};
    const auto* former = inForce.load();
    auto next = std::make_unique<Services>(former != nullptr ? *former : linuxServices());
    overlay(*next, std::move(services));
    // The former set is left alone: another thread may be reading it.
    inForce = next.release();
}

const Services& services() {
    if (const auto* current = inForce.load()) {
        return *current;
    }
    const std::scoped_lock lock{changing};
    if (inForce.load() == nullptr) {
        inForce = std::make_unique<Services>(linuxServices()).release();
    }
    return *inForce.load();
}

} // namespace kivo::platform
