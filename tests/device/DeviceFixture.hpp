#pragma once

#include "support/HostFixture.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/Window.hpp>

namespace kivo::test {

/// A host that draws with Qt, in front of a session that shows screens.
class DeviceFixture : public OfflineHost {
protected:
    DeviceFixture() {
        installServices({});
        services.fonts = device::fonts();
        platform::install(services);
        session = KivoSDK::load("KEY", "18");
        navigation = std::make_shared<platform::NavigationController>(host);
        window->setRootViewController(navigation);
        session->setContext(host);
    }

    ~DeviceFixture() override { session->setContext(nullptr); }

    /// Shows the activation code screen as a session does; its codes go to `code`.
    void showCodeScreen(CodeTextFieldStyle style = CodeTextFieldStyle::boxed) {
        const auto theme = std::make_shared<ThemeCustomization>();
        theme->codeTextFieldStyle = style;
        theme->maximumContentSizeCategoryLimit = platform::ContentSizeCategory::accessibilityExtraExtraExtraLarge;
        session->setTheme(theme);
        session->acquire(AcquisitionObject::activationCode, nullptr, [this](const IdvOutcome& outcome) {
            code = outcome ? (*outcome)->data() : std::string{name(outcome.error())};
        });
        mainLoop->drain();
    }

    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation;
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    std::shared_ptr<KivoAPI> session;
    std::string code;
};

} // namespace kivo::test
