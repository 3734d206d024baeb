#pragma once

#include "support/HostFixture.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <QPointF>
#include <cstdlib>

namespace kivo::test {

/// A host that draws with Qt, in front of a session that shows screens.
class DeviceFixture : public OfflineHost {
public:
    ~DeviceFixture() override {
        session->setContext(nullptr);
        unsetenv("LC_ALL");
    }

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

    /// Has the screens that come next speak that language.
    void speak(const char* language) {
        setenv("LC_ALL", language, /*overwrite=*/1);
        services.bundles = platform::linuxServices(
                               {.mainBundle = {}, .dataFolder = folder.path() / "other", .trustedCertificates = {}})
                               .bundles;
        platform::install(services);
    }

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

    /// Where a finger touches the view, on the display.
    static QPointF middleOf(const platform::View& view) {
        const auto frame = view.frameOnScreen();
        return {frame.left() + frame.size.width / 2, frame.top() + frame.size.height / 2};
    }

    std::string textOf(const std::string& field) const { return window->find<platform::TextField>(field)->text(); }

    std::shared_ptr<platform::ViewController> host = std::make_shared<platform::ViewController>();
    std::shared_ptr<platform::NavigationController> navigation;
    std::shared_ptr<platform::Window> window = std::make_shared<platform::Window>();
    std::shared_ptr<KivoAPI> session;
    std::string code;
};

} // namespace kivo::test
