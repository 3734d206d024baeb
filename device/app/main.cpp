#include "Host.hpp"
#include "HostLook.hpp"
#include "Records.hpp"
#include "StandardOutput.hpp"
#include "SteeringPanel.hpp"
#include "Widgets.hpp"

#include <kivo/device/Fonts.hpp>
#include <kivo/device/MainLoop.hpp>
#include <kivo/device/PhoneView.hpp>
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCommandLineParser>
#include <QPointer>
#include <QScrollArea>
#include <QShortcut>
#include <QSplitter>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

using namespace kivo;
using namespace kivo::device::app;

/// The phone on its own, on a darker ground that shows its edges, in a scroll area for displays that are too low for
/// it.
std::unique_ptr<QWidget> makePhone(const std::shared_ptr<platform::Window>& window) {
    auto area = std::make_unique<QScrollArea>();
    area->setAlignment(Qt::AlignCenter);
    area->setFrameShape(QFrame::NoFrame);
    area->viewport()->setBackgroundRole(QPalette::Mid);
    area->viewport()->setAutoFillBackground(true);
    area->setWidget(std::make_unique<device::PhoneView>(window).release());
    area->setMinimumWidth(static_cast<int>(window->frame().size.width) + 20);
    return area;
}

/// Requests are recorded on the service's threads and shown on this one.
void showRequests(simulator::IdentityService& service, QPointer<Records> records) {
    service.onRequest([records = std::move(records)](const simulator::RecordedRequest& request) {
        platform::RunLoop::main()->async([records, request] {
            if (records) {
                records->add(request);
            }
        });
    });
}

int run(const QString& version) {
    const QTemporaryDir folder;
    const auto service = std::make_shared<simulator::IdentityService>();
    const auto camera = std::make_shared<simulator::Camera>();
    const auto readID = std::make_shared<simulator::ReadID>(simulator::Reading::byPerson());
    const auto faceTec = std::make_shared<simulator::FaceTec>();
    const auto window = std::make_shared<platform::Window>();
    auto services = platform::linuxServices({.mainBundle = {},
                                             .dataFolder = folder.path().toStdString(),
                                             .trustedCertificates = service->trustedCertificates()});
    const auto look = std::make_shared<HostLook>(services.bundles);
    services.reachability = std::make_shared<simulator::Reachability>();
    services.camera = camera;
    services.readID = readID;
    services.faceTec = faceTec;
    services.fonts = device::fonts();
    services.bundles = look;
    platform::install(services);
    const auto page = service->joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});
    KivoSDK::setLogLevel(LogLevel::debug);

    const device::MainLoop mainLoop;
    if (!KivoSDK::load("DEVICE", version.toStdString())) {
        std::fprintf(stderr, "kivo-device: there is no interface version %s; take 14 to 18\n",
                     version.toStdString().c_str());
        return 2;
    }
    const auto host = std::make_shared<Host>(window, version.toStdString());

    QSplitter top;
    top.setWindowTitle("Kivo device");
    top.addWidget(makePhone(window).release());
    auto side = std::make_unique<QSplitter>(Qt::Vertical);
    side->addWidget(
        std::make_unique<SteeringPanel>(Steered{.window = window,
                                                .service = service,
                                                .camera = camera,
                                                .readID = readID,
                                                .faceTec = faceTec,
                                                .look = look,
                                                .setTheme = [host](const auto& theme) { host->setTheme(theme); }})
            .release());
    auto records = std::make_unique<Records>();
    showRequests(*service, records.get());
    const StandardOutput output{[log = QPointer{records.get()}](const QString& line) {
        if (log) {
            log->addLogLine(line);
        }
    }};
    side->addWidget(records.release());
    top.addWidget(side.release());
    host->start();
    host->setTheme(themePresets().front().make());
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &top,
                     [&] { look->dress(*window); });
    const QShortcut quit{QKeySequence{QKeySequence::Quit}, &top, [&top] { top.close(); }};
    top.resize(1000, 900);
    top.show();
    const int result = QApplication::exec();
    service->onRequest({});
    return result;
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application{argc, argv};
    QApplication::setApplicationName("kivo-device");
    QCommandLineParser arguments;
    arguments.setApplicationDescription(
        "Shows the screens of a host with libkivo against a simulated identity service,\n"
        "to go the road by hand. The service knows the activation code 123456.");
    arguments.addHelpOption();
    const QCommandLineOption version{"interface", "Interface version to load, 14 to 18.", "NN", "18"};
    arguments.addOption(version);
    arguments.process(application);
    try {
        return run(arguments.value(version));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kivo-device: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
