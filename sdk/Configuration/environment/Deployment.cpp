#include "Configuration/environment/DeploymentInForce.hpp"
#include "Configuration/environment/SdkBundle.hpp"
#include "platform/base/Process.hpp"

#include <kivo/Deployment.hpp>
#include <kivo/platform/Services.hpp>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace kivo {
namespace {

struct Installed {
    std::mutex mutex;
    /// Null until it is installed or read.
    std::shared_ptr<const Deployment> deployment;
};

Installed& installed() {
    return platform::Process::current().part<Installed>([] { return new Installed; });
}

struct PageOf {
    SDKEnv environment;
    std::string JoinPages::* page;
};

constexpr std::array pages{
    PageOf{SDKEnv::PROD, &JoinPages::PROD},
    PageOf{SDKEnv::PREPROD, &JoinPages::PREPROD},
    PageOf{SDKEnv::TEST, &JoinPages::TEST},
    PageOf{SDKEnv::DEV, &JoinPages::DEV},
};

Deployment readFrom(const platform::PropertyValue::Dictionary& root) {
    Deployment deployment;
    if (const auto listed = root.find("JoinPages"); listed != root.end() && listed->second.dictionary() != nullptr) {
        for (const auto& [environment, page] : pages) {
            const auto name = SDKEnvHelper::environmentName(environment);
            const auto text = listed->second.dictionary()->find(std::string{name});
            if (text != listed->second.dictionary()->end() && text->second.text() != nullptr) {
                deployment.joinPages.*page = *text->second.text();
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
    const auto found = std::ranges::find(pages, environment, &PageOf::environment);
    return found == pages.end() ? std::string{} : joinPages.*(found->page);
}

void Deployment::install(Deployment deployment) {
    auto replacement = std::make_shared<const Deployment>(std::move(deployment));
    const std::scoped_lock lock{installed().mutex};
    std::swap(installed().deployment, replacement);
}

Deployment Deployment::current() {
    return *deploymentInForce();
}

std::shared_ptr<const Deployment> deploymentInForce() {
    {
        const std::scoped_lock lock{installed().mutex};
        if (installed().deployment) {
            return installed().deployment;
        }
    }
    auto deployment = std::make_shared<const Deployment>(shipped());
    const std::scoped_lock lock{installed().mutex};
    if (!installed().deployment) {
        installed().deployment = std::move(deployment);
    }
    return installed().deployment;
}

} // namespace kivo
