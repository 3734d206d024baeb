#include "Configuration/environment/SdkBundle.hpp"
#include "Configuration/logging/Log.hpp"
#include "impl/SessionAPI.hpp"
#include "services/acquisition/facemap/facetec/LiveNessCheckVC.hpp"
#include "services/acquisition/facemap/facetec/OCRScanInitializeVC.hpp"
#include "services/acquisition/nfc/innovator/AuthMenuVC.hpp"

#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace kivo {
namespace {

using platform::Storyboard;
using platform::ViewController;

/// Prepares a screen for the session API; false when the screen is of another class.
using Adopt = bool (*)(const std::shared_ptr<ViewController>& screen, const std::shared_ptr<SessionAPI>& owner);

template <class Screen>
bool adopt(const std::shared_ptr<ViewController>& screen, const std::shared_ptr<SessionAPI>& owner) {
    const auto own = std::dynamic_pointer_cast<Screen>(screen);
    if (own) {
        own->delegate = owner;
        own->themeObj = owner->sdkTheme();
    }
    return own != nullptr;
}

enum class Home { sdkBundle, mainBundle };

/// The place of a screen's layout.
struct Scene {
    AcquisitionObject object;
    std::string_view identifier;
    Home home;
    Adopt adopt;
};

constexpr std::array scenes{
    Scene{AcquisitionObject::activationCode, "QRCodeVC", Home::sdkBundle, adopt<QRCodeVC>},
    Scene{AcquisitionObject::nfcScan, "AuthMenuVCID", Home::mainBundle, adopt<AuthMenuVC>},
    Scene{AcquisitionObject::mrzScan, "AuthMenuVCID", Home::mainBundle, adopt<AuthMenuVC>},
    Scene{AcquisitionObject::facemapScan, "LivenessCheckVCID", Home::mainBundle, adopt<LiveNessCheckVC>},
    Scene{AcquisitionObject::ocrScan, "OCRScanInitializeVC", Home::mainBundle, adopt<OCRScanInitializeVC>},
};

const Scene* sceneOf(AcquisitionObject object) {
    const auto* const scene = std::ranges::find(scenes, object, &Scene::object);
    return scene == scenes.end() ? nullptr : scene;
}

std::expected<std::shared_ptr<Storyboard>, std::string> storyboardOf(const Scene& scene) {
    const bool own = scene.home == Home::sdkBundle;
    const auto bundle = own ? sdkBundle() : platform::services().bundles->main();
    if (!bundle) {
        return std::unexpected{"ZORFramework.bundle is missing; install it beside the library."};
    }
    if (!own && !bundle->pathForResource("ZORFramework", "storyboard")) {
        const auto sample = sdkBundle() ? sdkBundle()->pathForResource("ZORFramework", "storyboard") : std::nullopt;
        return std::unexpected{"The host's bundle has no ZORFramework.storyboard; make the bundle with "
                               "kivo_add_resources, or copy the file there from " +
                               (sample ? sample->parent_path().string() : "the SDK's bundle") + "."};
    }
    return Storyboard::open("ZORFramework", bundle);
}

/// The screen, or a sentence for the log that says how to mend its absence.
std::expected<std::shared_ptr<ViewController>, std::string>
makeScreen(const Scene& scene, const std::shared_ptr<SessionAPI>& owner, ViewController& context) {
    if (!context.navigationController() && !context.windowOfScreen()) {
        return std::unexpected{
            "The context view controller is in no window and in no navigation controller; show it in "
            "one of them before you acquire."};
    }
    const auto storyboard = storyboardOf(scene);
    if (!storyboard) {
        return std::unexpected{storyboard.error()};
    }
    auto screen = (*storyboard)->instantiate(scene.identifier);
    if (screen && !scene.adopt(*screen, owner)) {
        return std::unexpected{"The scene \"" + std::string{scene.identifier} +
                               "\" of ZORFramework.storyboard has another class; give it the one of that name."};
    }
    return screen;
}

void show(const std::shared_ptr<ViewController>& screen, ViewController& context) {
    if (const auto navigation = context.navigationController()) {
        navigation->pushViewController(screen, /*animated=*/true);
    } else {
        context.present(screen, /*animated=*/false);
    }
}

} // namespace

void SessionAPI::acquire(AcquisitionObject object, std::shared_ptr<AcquisitionConfig> /*config*/,
                         IdvCompletion response) {
    const auto* const scene = rules_.presents(object) ? sceneOf(object) : nullptr;
    if (scene == nullptr) {
        return;
    }
    constexpr std::string_view function = "acquire(AcquisitionObject:config:response:)";
    resetAcquisitionStateIfDue();
    const auto problem = std::make_shared<std::string>();
    response = answeringScreen(std::move(response), problem);
    const auto context = withState([&](State& state) {
        std::swap(state.completionHandlerIdv, response);
        return state.contextViewController;
    });
    if (!context) {
        log::line(LogLevel::warning, function,
                  "There is no context view controller, so no screen is shown; call "
                  "setContext(viewController:) before you acquire.");
        return;
    }
    const auto screen = makeScreen(*scene, shared_from_this(), *context);
    if (!screen) {
        log::error(function, screen.error());
        *problem = screen.error();
        completeOnMainQueue(std::unexpected{ResponseCode::UNKNOWN_ERROR});
        return;
    }
    if (const auto codeScreen = std::dynamic_pointer_cast<QRCodeVC>(*screen)) {
        withState([&](State& state) {
            state.qrCodeVC = codeScreen;
            state.codeHasJoined = codeScreen->hasJoined;
        });
    }
    show(*screen, *context);
}

} // namespace kivo
