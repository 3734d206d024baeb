#include "Album.hpp"
#include "Options.hpp"
#include "PinnedBundle.hpp"
#include "Report.hpp"
#include "Road.hpp"

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
#include <memory>
#include <string>
#include <vector>

namespace {

/// A folder for the demo's keychain, gone with the demo.
class TemporaryFolder {
public:
    TemporaryFolder() {
        auto pattern = (std::filesystem::temp_directory_path() / "kivo-demo-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            path_ = pattern;
        }
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// The library prints its lines on standard output. They go to standard error when asked for and nowhere otherwise, so
/// that the report alone is on standard output.
std::FILE* openReportStream(const demo::Options& options) {
    const int report = dup(STDOUT_FILENO);
    const int library = options.log ? dup(STDERR_FILENO) : open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (report < 0 || library < 0) {
        return stdout;
    }
    dup2(library, STDOUT_FILENO);
    close(library);
    return fdopen(report, "w");
}

void injectFaults(kivo::simulator::IdentityService& service, const demo::Options& options) {
    for (const auto& each : options.faults) {
        service.inject(each.endpoint, each.fault);
    }
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
        camera->showCode(R"({"code":"123456"})");
    } else {
        camera->showPicture(options.scanFile);
    }
    return camera;
}

/// `album` is null when no pictures are wanted; it must outlive all that is laid out with its fonts.
int run(const demo::Options& options, const std::shared_ptr<demo::Album>& album) {
    const TemporaryFolder folder;
    if (folder.path().empty()) {
        std::fprintf(stderr, "kivo-demo: cannot make a folder below %s\n",
                     std::filesystem::temp_directory_path().c_str());
        return EXIT_FAILURE;
    }
    kivo::simulator::IdentityServiceConfiguration configuration;
    configuration.retryLimit = 5;
    configuration.hostPerEndpoint = !options.faults.empty();
    kivo::simulator::IdentityService service{configuration};

    auto services = kivo::platform::linuxServices(
        {.mainBundle = options.pin.empty() ? "" : demo::makePinnedBundle(folder.path(), options.pin, service),
         .dataFolder = folder.path(),
         .trustedCertificates = service.trustedCertificates()});
    services.reachability = std::make_shared<kivo::simulator::Reachability>();
    if (album) {
        services.fonts = album->fonts();
    }
    services.faceTec = makeFaceTec(options);
    services.readID = makeReadID(options);
    services.camera = makeCamera(options);
    kivo::platform::install(services);
    const auto page = service.joinPage();
    kivo::Deployment::install({.joinPages = {page, page, page, page}});
    kivo::KivoSDK::setLogLevel(options.log ? kivo::LogLevel::debug : kivo::LogLevel::warning);
    injectFaults(service, options);

    demo::Report report{openReportStream(options), options.json};
    bool well = true;
    for (const auto& version : options.version == "all" ? demo::everyVersion : std::vector{options.version}) {
        auto session = options;
        session.version = version;
        report.begin(session, service);
        const bool walkedWell = demo::walk(session, service, album, [&](const demo::Step& step) { report.step(step); });
        report.end(walkedWell);
        well = walkedWell && well;
    }
    report.summary();
    for (const auto& violation : service.violations()) {
        std::fprintf(stderr, "kivo-demo: the service was sent what it does not take: %s\n", violation.c_str());
        well = false;
    }
    if (album) {
        report.pictures(album->count(), options.screens);
        if (!album->problem().empty()) {
            std::fprintf(stderr, "kivo-demo: %s\n", album->problem().c_str());
            return EXIT_FAILURE;
        }
    }
    return well ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
    const auto options = demo::parse({argv + 1, argv + argc});
    if (!options) {
        std::fprintf(stderr, "kivo-demo: %s\n\n%s", options.error().c_str(), demo::usage().c_str());
        return 2;
    }
    if (options->help) {
        std::printf("%s", demo::usage().c_str());
        return EXIT_SUCCESS;
    }
    if (options->screens.empty()) {
        return run(*options, nullptr);
    }
    const auto album = demo::Album::open(options->screens);
    if (!album) {
        std::fprintf(stderr, "kivo-demo: %s\n", album.error().c_str());
        return EXIT_FAILURE;
    }
    return run(*options, *album);
}
