#pragma once

#include "support/TemporaryFolder.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace kivo::test {

/// A host that draws with Qt, in front of a session that shows screens.
class DeviceFixture : public ::testing::Test {
protected:
    DeviceFixture() {
        auto services = platform::linuxServices(
            {.mainBundle = {}, .dataFolder = folder.path() / "data", .trustedCertificates = {}});
        services.fonts = device::fonts();
        services.mainQueue = mainLoop;
        platform::install(services);
        session = KivoSDK::load("KEY", "18");
        navigation = std::make_shared<platform::NavigationController>(host);
        window->setRootViewController(navigation);
        session->setContext(host);
    }

    ~DeviceFixture() override { session->setContext(nullptr); }

    /// Shows the activation code screen as a session does; its codes go to `code`.
    void showCodeScreen(const std::shared_ptr<ThemeCustomization>& theme = std::make_shared<ThemeCustomization>()) {
        const auto config = std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "PASSPORT", "P6M", "0.8", "UTO", "face");
        session->setTheme(theme);
        session->acquire(AcquisitionObject::activationCode, config, [this](const IdvOutcome& outcome) {
            code = outcome ? (*outcome)->data() : std::string{name(outcome.error())};
        });
        mainLoop->drain();
    }

    /// Shows a screen as the storyboard lays it out.
    void showScene(const std::string& identifier) {
        const auto storyboard = platform::Storyboard::open("ZORFramework", platform::services().bundles->main());
        ASSERT_TRUE(storyboard) << storyboard.error();
        const auto screen = (*storyboard)->instantiate(identifier);
        ASSERT_TRUE(screen) << screen.error();
        navigation->pushViewController(*screen, /*animated=*/false);
        mainLoop->drain();
    }

    TemporaryFolder folder;
    std::shared_ptr<platform::ManualClock> clock = std::make_shared<platform::ManualClock>();
    std::shared_ptr<platform::RunLoop> mainLoop = std::make_shared<platform::RunLoop>(clock);
    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation;
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    std::shared_ptr<KivoAPI> session;
    std::string code;
};

} // namespace kivo::test
