#include "DeviceWindow.hpp"
#include "Laboratory.hpp"
#include "StandardOutput.hpp"
#include "ToolLook.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"
#include "program/Temporary.hpp"

#include <kivo/kivo.hpp>

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using namespace kivo::device::app;

/// Starts Qt, or throws a sentence where there is no display; Qt itself would abort the process.
std::unique_ptr<QApplication> startQt(int& argc, char** argv) {
    auto* const before = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
        // The warnings before the fatal message say the same at length.
        if (type == QtFatalMsg) {
            program::complain("no window can be opened: there is no display (see DISPLAY and WAYLAND_DISPLAY), or Qt "
                              "has no plug-in for the display (see QT_QPA_PLATFORM)");
            program::endAtOnce(EXIT_FAILURE);
        }
    });
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(before);
    return application;
}

/// Ends the program when the window has been drawn once.
class UntilShown final : public QObject {
public:
    explicit UntilShown(QWidget& window) { window.installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            // Qt hands the drawn window to the display before the loop goes on.
            QTimer::singleShot(0, qApp, &QApplication::quit);
        }
        return QObject::eventFilter(watched, event);
    }
};

int show(const std::string& version, const program::TemporaryFolder& folder, bool untilShown) {
    dressApplication(isDesktopDark());
    Laboratory laboratory{version, folder};
    DeviceWindow window{laboratory};
    StandardOutput output{[records = QPointer{&window.records()}](const QString& line) {
        if (records) {
            records->addLogLine(line);
        }
    }};
    laboratory.start();
    std::optional<UntilShown> ending;
    if (untilShown) {
        ending.emplace(window);
    }
    window.show();
    window.focusPhone();
    const int result = QApplication::exec();
    laboratory.service->onRequest({});
    if (const auto problem = output.finish(); !problem.empty()) {
        program::complain(problem);
        return EXIT_FAILURE;
    }
    return result;
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-device", [&]() -> int {
        const std::vector<std::string> versions{SdkVersions::all().begin(), SdkVersions::all().end()};
        auto version = versions.back();
        program::CommandLine line{
            {.name = "kivo-device",
             .arguments = "[options]",
             .purpose = "Shows the screens of a host with libkivo against a simulated identity service,\n"
                        "for a session by hand. The service knows the activation code 123456.\n",
             .statuses = {{0, "the window was closed"},
                          {1, "there is no display, or standard output could not be written"},
                          {2, "the command line is wrong"}}}};
        line.value("--interface", "NN",
                   "interface version to load: " + program::listed(versions) + " (default " + version + ")",
                   program::oneOf(versions, version));
        bool untilShown = false;
        line.flag("--until-shown", untilShown, "end when the window has been drawn once, to measure the start");
        if (const auto status = line.read(argc, argv)) {
            return *status;
        }
        // Qt has options of its own, which a mistyped one could match: Qt reads the environment alone.
        argc = 1;
        const program::TemporaryFolder folder{"kivo-device"};
        const auto application = folder.holding([&] { return startQt(argc, argv); });
        QApplication::setApplicationName("kivo-device");
        return show(version, folder, untilShown);
    });
}
