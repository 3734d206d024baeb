#include "Configuration/environment/SdkBundle.hpp"
#include "platform/base/Process.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>

#include <cstddef>
#include <mutex>
#include <optional>
#include <utility>

namespace kivo {
namespace {

struct Installed {
    std::mutex mutex;
    std::optional<Deployment> deployment;
};

Installed& installed() {
    return platform::Process::current().part<Installed>([] { return new Installed; });
}

Deployment readFrom(const platform::PropertyValue::Dictionary& root) {
    Deployment deployment;
    if (const auto pages = root.find("JoinPages"); pages != root.end() && pages->second.dictionary() != nullptr) {
        for (std::size_t i = 0; i < deployment.joinPages.size(); ++i) {
            const auto name = SDKEnvHelper::environmentName(static_cast<SDKEnv>(i));
            const auto page = pages->second.dictionary()->find(std::string{name});
            if (page != pages->second.dictionary()->end() && page->second.text() != nullptr) {
                deployment.joinPages[i] = *page->second.text();
            }
        }
    }
    if (const auto production = root.find("FaceTecProduction");
        production != root.end() && production->second.boolean() != nullptr) {
        deployment.faceTecProduction = *production->second.boolean();
    }
    if (const auto key = root.find("FaceTecProductionKey"); key != root.end() && key->second.text() != nullptr) {
        deployment.faceTecProductionKey = *key->second.text();
    }
    if (const auto pins = root.find("RequiresPins"); pins != root.end()) {
        // Any value but a plain false requires pins, which is the safe side.
        deployment.requiresPins = pins->second.boolean() == nullptr || *pins->second.boolean();
    }
    return deployment;
}

Deployment shipped() {
    const auto bundle = sdkBundle();
    const auto plist = bundle ? bundle->propertyList("Deployment") : std::nullopt;
    if (!plist || plist->dictionary() == nullptr) {
        platform::services().diagnostics->report(
            "deployment", "The SDK's bundle has no readable Deployment.plist, so no join page is "
                          "known. Install ZORFramework.bundle beside the library, or call "
                          "kivo::Deployment::install before the first join.");
        // The file would say whether pins are required; without the file they are.
        return {.joinPages = {}, .requiresPins = true};
    }
    return readFrom(*plist->dictionary());
}

} // namespace

std::string Deployment::joinPage(SDKEnv environment) const {
    const auto index = static_cast<std::size_t>(rawValue(environment));
    return index < joinPages.size() ? joinPages[index] : std::string{};
}

void Deployment::install(Deployment deployment) {
    const std::scoped_lock lock{installed().mutex};
    installed().deployment = std::move(deployment);
}

Deployment Deployment::current() {
    {
        const std::scoped_lock lock{installed().mutex};
        if (installed().deployment) {
            return *installed().deployment;
        }
    }
    auto deployment = shipped();
    const std::scoped_lock lock{installed().mutex};
    if (!installed().deployment) {
        installed().deployment = std::move(deployment);
    }
    return *installed().deployment;
}

} // namespace kivo
