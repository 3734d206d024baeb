// The time of one frame of the activation code screen: after a keystroke, after a change of the reading size, and for a
// new screen.
#include "Configuration/environment/SdkBundle.hpp"
#include "Measuring.hpp"
#include "services/acquisition/qr/inhouse/QRCodeVC.hpp"

#include <kivo/KivoSDK.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/Storyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

using namespace kivo;
using namespace kivo::platform;

std::shared_ptr<QRCodeVC> makeScreen(const std::shared_ptr<ThemeCustomization>& theme) {
    const auto storyboard = Storyboard::open("ZORFramework", sdkBundle());
    const auto made = storyboard ? (*storyboard)->instantiate("QRCodeVC") : std::unexpected{storyboard.error()};
    if (!made) {
        bench::giveUp(made.error());
    }
    auto screen = std::dynamic_pointer_cast<QRCodeVC>(*made);
    screen->themeObj = theme;
    return screen;
}

void keystroke(benchmark::State& state) {
    const auto window = std::make_shared<Window>();
    window->setRootViewController(makeScreen(std::make_shared<ThemeCustomization>()));
    window->layoutIfNeeded();
    const auto first = window->find<TextField>("textFieldDigitOne");
    for ([[maybe_unused]] const auto each : state) {
        // Each character is deleted again, so that the boxes never fill up.
        first->becomeFirstResponder();
        first->insertText("7");
        window->layoutIfNeeded();
        first->setText("");
        window->layoutIfNeeded();
    }
}

void newReadingSize(benchmark::State& state) {
    const auto window = std::make_shared<Window>();
    window->setRootViewController(makeScreen(std::make_shared<ThemeCustomization>()));
    auto category = ContentSizeCategory::large;
    for ([[maybe_unused]] const auto each : state) {
        category = category == ContentSizeCategory::large ? ContentSizeCategory::medium : ContentSizeCategory::large;
        window->setPreferredContentSizeCategory(category);
        window->layoutIfNeeded();
    }
}

void newScreen(benchmark::State& state) {
    const auto window = std::make_shared<Window>();
    const auto theme = std::make_shared<ThemeCustomization>();
    for ([[maybe_unused]] const auto each : state) {
        window->setRootViewController(makeScreen(theme));
        window->layoutIfNeeded();
    }
}

BENCHMARK(keystroke)->Unit(benchmark::kMicrosecond);
BENCHMARK(newReadingSize)->Unit(benchmark::kMicrosecond);
BENCHMARK(newScreen)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    // Every change of the reading size is logged at the information level.
    KivoSDK::setLogLevel(LogLevel::error);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
