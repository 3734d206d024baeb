#include "Host.hpp"
#include "HostLook.hpp"
#include "Records.hpp"
#include "SteeringPanel.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"
#include "program/Temporary.hpp"

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
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace kivo;
using namespace kivo::device::app;

/// The phone on a darker ground that shows its edges, in a scroll area for displays that are lower than the phone.
/// Qt's tree of widgets owns both.
QWidget* scrolledPhone(device::PhoneView* phone) {
    auto area = std::make_unique<QScrollArea>();
    area->setAlignment(Qt::AlignCenter);
    area->setFrameShape(QFrame::NoFrame);
    area->viewport()->setBackgroundRole(QPalette::Mid);
    area->viewport()->setAutoFillBackground(true);
    area->setWidget(phone);
    area->setMinimumWidth(phone->width() + 20);
    // When the phone has moved its focus, and perhaps scrolled, the area follows.
    QObject::connect(
        qApp, &QApplication::focusChanged, area.get(),
        [area = area.get(), phone] {
            auto* const focused = QApplication::focusWidget();
            if (focused != nullptr && focused != phone && phone->isAncestorOf(focused)) {
                area->ensureWidgetVisible(focused);
            }
        },
        Qt::QueuedConnection);
    return area.release();
}

/// The panel in a scroll area, as wide as the panel needs.
QWidget* scrolled(std::unique_ptr<SteeringPanel> panel) {
    auto area = std::make_unique<QScrollArea>();
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setMinimumWidth(panel->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
    area->setWidget(panel.release());
    return area.release();
}

/// Shows every request on this thread. The service records requests on threads of its own.
void showRequests(simulator::IdentityService& service, QPointer<Records> records) {
    service.onRequest([records = std::move(records)](const simulator::RecordedRequest& request) {
        platform::RunLoop::main()->async([records, request] {
            if (records) {
                records->add(request);
            }
        });
    });
}

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

int show(const std::string& version, const program::TemporaryFolder& folder) {
    const auto service = folder.holding([] { return std::make_shared<simulator::IdentityService>(); });
    const auto camera = std::make_shared<simulator::Camera>();
    const auto readID = std::make_shared<simulator::ReadID>(simulator::Reading::byPerson());
    const auto faceTec = std::make_shared<simulator::FaceTec>();
    const auto window = std::make_shared<platform::Window>();
    auto services = platform::linuxServices(
        {.mainBundle = {}, .dataFolder = folder.path(), .trustedCertificates = service->trustedCertificates()});
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
    const auto host = std::make_shared<Host>(window, version);

    QSplitter top;
    top.setWindowTitle("Kivo device");
    auto* const phone = std::make_unique<device::PhoneView>(window).release();
    top.addWidget(scrolledPhone(phone));
    auto side = std::make_unique<QSplitter>(Qt::Vertical);
    side->addWidget(scrolled(std::make_unique<SteeringPanel>(Steered{.window = window,
                                                                     .service = service,
                                                                     .camera = camera,
                                                                     .readID = readID,
                                                                     .faceTec = faceTec,
                                                                     .look = look,
                                                                     .setLook = [host, look](const auto& theme) {
                                                                         host->setTheme(theme);
                                                                         host->setColors(look->colors());
                                                                     }})));
    auto records = std::make_unique<Records>();
    showRequests(*service, records.get());
    StandardOutput output{[log = QPointer{records.get()}](const QString& line) {
        if (log) {
            log->addLogLine(line);
        }
    }};
    side->addWidget(records.release());
    top.addWidget(side.release());
    host->start();
    host->setTheme(themePresets().front().make(look->isDark()));
    host->setColors(look->colors());
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, &top,
                     [&] { look->dress(*window); });
    const QShortcut quit{QKeySequence{QKeySequence::Quit}, &top, [&top] { top.close(); }};
    // Room for the frame that a window manager draws.
    top.resize(QSize{1000, 900}.boundedTo(top.screen()->availableSize() - QSize{20, 60}));
    top.show();
    phone->setFocus();
    const int result = QApplication::exec();
    service->onRequest({});
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
        if (const auto status = line.read(argc, argv)) {
            return *status;
        }
        // Qt has options of its own, which a mistyped one could match: Qt reads the environment alone.
        argc = 1;
        const program::TemporaryFolder folder{"kivo-device"};
        const auto application = folder.holding([&] { return startQt(argc, argv); });
        QApplication::setApplicationName("kivo-device");
        return show(version, folder);
    });
}
