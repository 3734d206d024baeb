#pragma once

#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"
#include "support/HeardFromCodeScreen.hpp"
#include "support/HostScreenFixture.hpp"

#include <memory>
#include <string>
#include <vector>

namespace kivo::test {

/// The activation code screen on a host's navigation stack, and what it tells.
class ActivationCodeScreen : public HostScreenFixture {
protected:
    std::shared_ptr<QRCodeVC> make(const std::shared_ptr<ThemeCustomization>& theme) {
        auto screen = makeScreen<QRCodeVC>("QRCodeVC");
        screen->delegate = delegate;
        screen->themeObj = theme;
        return screen;
    }

    std::shared_ptr<QRCodeVC> shown(const std::shared_ptr<ThemeCustomization>& theme) {
        auto screen = make(theme);
        push(screen);
        return screen;
    }

    static std::shared_ptr<ThemeCustomization> themed(CodeTextFieldStyle style) {
        auto theme = std::make_shared<ThemeCustomization>();
        theme->codeTextFieldStyle = style;
        return theme;
    }

    static std::shared_ptr<platform::TextField> box(QRCodeVC& screen, int tag) {
        return std::dynamic_pointer_cast<platform::TextField>(screen.view()->viewWithTag(tag));
    }

    static std::vector<std::string> boxes(QRCodeVC& screen) {
        std::vector<std::string> texts;
        for (int tag = 1; tag <= 6; ++tag) {
            texts.push_back(box(screen, tag)->text());
        }
        return texts;
    }

    std::shared_ptr<HeardFromCodeScreen> delegate = std::make_shared<HeardFromCodeScreen>();
};

} // namespace kivo::test
