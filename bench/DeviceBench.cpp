// One frame of the device: the code screen, the densest one, drawn whole and after a keystroke. A frame may take 8 ms.
#include <kivo/device/Fonts.hpp>
#include <kivo/device/PhoneView.hpp>
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <chrono>
#include <functional>
#include <memory>

namespace {

using namespace kivo;
using namespace kivo::platform;
using namespace std::chrono_literals;

constexpr auto limit = 8ms;

/// Measures `frame` and fails when frames take longer than the limit on average.
void measure(benchmark::State& state, const std::function<void()>& frame) {
    const auto start = std::chrono::steady_clock::now();
    for ([[maybe_unused]] const auto each : state) {
        frame();
    }
    const auto took = std::chrono::steady_clock::now() - start;
    if (took > limit * static_cast<long>(state.iterations())) {
        state.SkipWithError("a frame takes more than 8 ms");
    }
}

void wholeScreen(benchmark::State& state) {
    const auto window = std::make_shared<Window>();
    const auto host = std::make_shared<ViewController>();
    window->setRootViewController(host);
    const auto session = KivoSDK::load("BENCH", "18");
    session->setTheme(std::make_shared<ThemeCustomization>());
    session->setContext(host);
    session->acquire(AcquisitionObject::activationCode,
                     std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "", "", "", "", ""), [](const auto&) {});
    RunLoop::main()->drain();
    device::PhoneView phone{window};
    phone.setAnimated(false);
    phone.show();
    double level = 1;
    measure(state, [&] {
        level = level == 1 ? 0.99 : 1;
        window->visibleViewController()->view()->setBackgroundColor(Color::white(level));
        phone.synchronize();
        phone.repaint();
    });
    session->setContext(nullptr);
}

void keystroke(benchmark::State& state) {
    const auto field = std::make_shared<TextField>();
    field->setPlacement({.top = 100, .left = 20, .width = 300, .height = 40});
    const auto screen = std::make_shared<ViewController>();
    screen->view()->addSubview(field);
    const auto window = std::make_shared<Window>();
    window->setRootViewController(screen);
    device::PhoneView phone{window};
    phone.show();
    measure(state, [&] {
        field->text().empty() ? field->insertText("7") : field->deleteBackward();
        phone.synchronize();
        phone.repaint();
    });
}

BENCHMARK(wholeScreen)->Unit(benchmark::kMicrosecond);
BENCHMARK(keystroke)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application{argc, argv};
    auto services = linuxServices();
    services.fonts = device::fonts();
    install(services);
    KivoSDK::setLogLevel(LogLevel::error);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
