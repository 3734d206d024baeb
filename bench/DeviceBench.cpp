// The time of one frame of the device: the whole code screen, which is the densest screen, a field after a
// keystroke, and the blink of the caret, which comes all the time. A frame may take 4 ms, and a blink 0.3 ms.
#include <kivo/device/Fonts.hpp>
#include <kivo/device/PhoneView.hpp>
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/ui/Keyboard.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QLineEdit>
#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

namespace {

using namespace kivo;
using namespace kivo::platform;
using namespace std::chrono_literals;

constexpr std::chrono::microseconds limit = 4ms;
constexpr auto limitOfBlink = 300us;

/// Measures `frame` and fails when frames take more of the processor's time than the limit on average. Drawing waits
/// for nothing, so this is the time of a frame on a machine that does nothing else.
void measure(benchmark::State& state, const std::function<void()>& frame, std::chrono::microseconds most = limit) {
    frame(); // the first one loads typefaces
    const auto start = std::clock();
    for ([[maybe_unused]] const auto each : state) {
        frame();
    }
    const std::chrono::duration<double> took{static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC};
    if (took > most * static_cast<long>(state.iterations())) {
        state.SkipWithError(("a frame takes more than " + std::to_string(most.count()) + " us").c_str());
    }
}

/// The code screen on a phone.
class CodeScreen {
public:
    CodeScreen() {
        window->setRootViewController(host_);
        session_->setTheme(std::make_shared<ThemeCustomization>());
        session_->setContext(host_);
        session_->acquire(AcquisitionObject::activationCode,
                          std::make_shared<AcquisitionConfig>(SDKEnv::TEST, "", "", "", "", ""), [](const auto&) {});
        RunLoop::main()->drain();
        phone.setAnimated(false);
        phone.show();
    }

    CodeScreen(const CodeScreen&) = delete;
    CodeScreen& operator=(const CodeScreen&) = delete;

    ~CodeScreen() { session_->setContext(nullptr); }

    std::shared_ptr<Window> window = std::make_shared<Window>();
    device::PhoneView phone{window};

private:
    std::shared_ptr<ViewController> host_ = std::make_shared<ViewController>();
    std::shared_ptr<KivoAPI> session_ = KivoSDK::load("BENCH", "18");
};

void wholeScreen(benchmark::State& state) {
    CodeScreen screen;
    double level = 1;
    measure(state, [&] {
        level = level == 1 ? 0.99 : 1;
        screen.window->visibleViewController()->view()->setBackgroundColor(Color::white(level));
        screen.phone.synchronize();
        screen.phone.repaint();
    });
}

void blink(benchmark::State& state) {
    CodeScreen screen;
    screen.phone.activateWindow();
    QApplication::setActiveWindow(&screen.phone);
    screen.window->find<TextField>("textFieldDigitOne")->becomeFirstResponder();
    screen.phone.synchronize();
    auto* const edit = screen.phone.findChild<QLineEdit*>("textFieldDigitOne");
    QApplication::processEvents();
    measure(
        state,
        [&] {
            edit->update(edit->rect());
            QApplication::processEvents();
        },
        limitOfBlink);
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
BENCHMARK(blink)->Unit(benchmark::kMicrosecond);

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
