#include "Album.hpp"
#include "Options.hpp"
#include "Report.hpp"
#include "Road.hpp"
#ifdef KIVO_DEMO_HAS_READER
#include "desk/Desk.hpp"
#endif
#include "program/Program.hpp"
#include "program/Temporary.hpp"

#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/Camera.hpp>
#include <kivo/simulator/FaceTec.hpp>
#include <kivo/simulator/IdentityService.hpp>
#include <kivo/simulator/Reachability.hpp>
#include <kivo/simulator/ReadID.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace {

using Stream = std::unique_ptr<std::FILE, decltype([](std::FILE* each) { std::fclose(each); })>;

/// Keeps standard output for the report alone. The library prints its log there: with --log the log goes to standard
/// error, otherwise the log is dropped.
Stream openReportStream(const demo::Options& options) {
    const int copy = dup(STDOUT_FILENO);
    Stream report{copy < 0 ? nullptr : fdopen(copy, "w")};
    const int library = options.log ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (!report || library < 0) {
        throw std::runtime_error{"standard output is closed, or cannot be written"};
    }
    dup2(library, STDOUT_FILENO);
    close(library);
    return report;
}

/// Copies the demo's own bundle, adds a list of pins, and returns the copy's folder; an empty path without --pin.
std::filesystem::path makePinnedBundle(const std::filesystem::path& below, const std::string& choice,
                                       const kivo::simulator::IdentityService* service) {
    if (choice.empty()) {
        return {};
    }
    std::string pin;
    if (choice == "leaf") {
        pin = service->pins().leaf;
    } else if (choice == "intermediate") {
        pin = service->pins().intermediate;
    } else if (choice == "other") {
        pin = kivo::simulator::CertificateAuthority{}.issue({}).pins.leaf;
    } else if (choice != "empty") {
        pin = choice;
    }
    const auto bundle = below / "Host.bundle";
    auto own = std::filesystem::read_symlink("/proc/self/exe");
    own += ".bundle";
    std::filesystem::copy(own, bundle, std::filesystem::copy_options::recursive);
    std::ofstream list{bundle / "readid_certificates.plist"};
    list << R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><array>)"
         << (pin.empty() ? "" : "<string>" + pin + "</string>") << "</array></plist>\n";
    if (!list.flush()) {
        throw std::runtime_error{"the list of pins could not be written into " + bundle.string()};
    }
    return bundle;
}

std::shared_ptr<kivo::simulator::FaceTec> makeFaceTec(const demo::Options& options) {
    auto vendor = std::make_shared<kivo::simulator::FaceTec>();
    for (const auto& each : options.outcomes) {
        if (each.screen == "face") {
            vendor->faceScan.status = each.status;
        } else if (each.screen == "idcard") {
            vendor->idScan.status = each.status;
        }
    }
    return vendor;
}

std::shared_ptr<kivo::simulator::ReadID> makeReadID(const demo::Options& options) {
    const auto* const outcome = options.outcomeOf("document");
    return std::make_shared<kivo::simulator::ReadID>(
        outcome == nullptr
            ? kivo::simulator::Reading::pageAndChip()
            : kivo::simulator::Reading::failure(static_cast<kivo::platform::readid::FailureReason>(outcome->status)));
}

std::shared_ptr<kivo::simulator::Camera> makeCamera(const demo::Options& options) {
    auto camera = std::make_shared<kivo::simulator::Camera>();
    if (options.scanFile.empty()) {
        camera->showCode(R"({"code":")" + options.code + R"("})");
    } else {
        camera->showPicture(options.scanFile);
    }
    return camera;
}

/// Installs the SDK's services, with the simulated ones among them. When `service` is null, the SDK
/// trusts the certificates and pins of the service that the options name.
void installServices(const demo::Options& options, const kivo::simulator::IdentityService* service,
                     const std::filesystem::path& folder, demo::Album* album) {
    const auto trusted = service != nullptr ? service->trustedCertificates() : std::filesystem::path{options.trusted};
    auto services = kivo::platform::linuxServices({.mainBundle = makePinnedBundle(folder, options.pin, service),
                                                   .dataFolder = folder,
                                                   .trustedCertificates = trusted});
    services.reachability = std::make_shared<kivo::simulator::Reachability>();
    if (album != nullptr) {
        services.fonts = album->fonts();
    }
    services.faceTec = makeFaceTec(options);
    services.readID = makeReadID(options);
    services.camera = makeCamera(options);
    kivo::platform::install(services);
    const auto page = service != nullptr ? service->joinPage() : options.service;
    kivo::Deployment::install({.joinPages = {page, page, page, page}});
    kivo::KivoSDK::setLogLevel(options.log ? kivo::LogLevel::debug : kivo::LogLevel::warning);
}

/// Walks through the wanted sessions. Returns whether all went well.
bool walkAll(const demo::Options& options, kivo::simulator::IdentityService* service,
             const std::shared_ptr<demo::Album>& album, std::FILE* out) {
    demo::Report report{out, options.json, options.version};
    bool well = true;
    for (const auto version : kivo::SdkVersions::all()) {
        if (!report.problem().empty() || (options.version != "all" && options.version != version)) {
            continue;
        }
        auto session = options;
        session.version = version;
        report.begin(session, service != nullptr ? service->joinPage() : "");
        const bool walkedWell = demo::walk(session, service, album, [&](const demo::Step& step) { report.step(step); });
        report.end(walkedWell);
        well = walkedWell && well;
    }
    const auto violations = service != nullptr ? service->violations() : std::vector<std::string>{};
    for (const auto& violation : violations) {
        program::complain("a request broke the protocol: " + violation);
    }
    if (album && !album->problem().empty()) {
        program::complain(album->problem());
        well = false;
    }
    well = well && violations.empty();
    report.close(violations, album ? album->count() : 0, options.screens, well);
    if (!report.problem().empty()) {
        program::complain(report.problem());
    }
    return well && report.problem().empty();
}

int walkFrom(demo::Options options) {
    const auto report = openReportStream(options);
    // The album outlives every view that its fonts measure.
    const auto album = options.screens.empty() ? nullptr : demo::Album::open(options.screens);
    const program::TemporaryFolder folder{"kivo-demo"};
#ifdef KIVO_DEMO_HAS_READER
    std::optional<desk::Desk> onDesk;
    if (options.chip) {
        // Before the service's threads run, because the card service is named by an environment variable.
        onDesk.emplace(desk::Desk::Way::cardService, folder.path());
        const auto& passport = *onDesk->passport();
        options.passport = {.way = onDesk->way(),
                            .documentNumber = passport.documentNumber(),
                            .dateOfBirth = passport.dateOfBirth(),
                            .dateOfExpiry = passport.dateOfExpiry()};
    }
#endif
    const auto makeService = [&] {
        kivo::simulator::IdentityServiceConfiguration configuration;
        configuration.retryLimit = 5;
        configuration.hostPerEndpoint = !options.faults.empty();
        return std::make_unique<kivo::simulator::IdentityService>(configuration);
    };
    const auto service = options.service.empty() ? folder.holding(makeService) : nullptr;
    installServices(options, service.get(), folder.path(), album.get());
#ifdef KIVO_DEMO_HAS_READER
    if (onDesk) {
        kivo::platform::Services reading;
        reading.readID = onDesk->makeReader(/*usesCamera=*/false);
        kivo::platform::install(reading);
    }
#endif
    for (const auto& each : options.faults) {
        service->inject(each.endpoint, each.fault);
    }
    return walkAll(options, service.get(), album, report.get()) ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-demo", [&] {
        const auto options = demo::parse(argc, argv);
        return options ? walkFrom(*options) : options.error();
    });
}
