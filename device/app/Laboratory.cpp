#include "Laboratory.hpp"

#ifdef KIVO_DEVICE_HAS_READER
#include "desk/Desk.hpp"

#include <kivo/reader/DocumentReader.hpp>
#endif

#include <kivo/device/Fonts.hpp>
#include <kivo/kivo.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/simulator/Reachability.hpp>

#include <utility>
#include <vector>

namespace kivo::device::app {

namespace {

/// A service with a key on a curve: an RSA key would take half of the tool's start.
std::shared_ptr<simulator::IdentityService> makeService() {
    simulator::IdentityServiceConfiguration configuration;
    configuration.keyType = simulator::KeyType::ec256;
    return std::make_shared<simulator::IdentityService>(configuration);
}

} // namespace

Laboratory::Laboratory(const std::string& version, const program::TemporaryFolder& folder)
    : service{folder.holding(makeService)}
    , camera{std::make_shared<simulator::Camera>()}
    , readID{std::make_shared<simulator::ReadID>(simulator::Reading::byPerson())}
    , faceTec{std::make_shared<simulator::FaceTec>()}
    , window{std::make_shared<platform::Window>()}
    , dataFolder_{folder.path()} {
    makeDocumentReaders(folder);
    auto services = platform::linuxServices(
        {.mainBundle = {}, .dataFolder = folder.path(), .trustedCertificates = service->trustedCertificates()});
    services.reachability = std::make_shared<simulator::Reachability>();
    services.camera = camera;
    services.readID = documentReaders;
    services.faceTec = faceTec;
    services.fonts = device::fonts();
    platform::install(services);
    const auto page = service->joinPage();
    Deployment::install({.joinPages = {page, page, page, page}});
    KivoSDK::setLogLevel(LogLevel::debug);
    mainLoop_ = std::make_unique<device::MainLoop>();
    host = std::make_shared<Host>(window, version);
}

void Laboratory::makeDocumentReaders([[maybe_unused]] const program::TemporaryFolder& folder) {
    std::vector<ChosenReader::Choice> choices{{.name = "The simulated vendor's", .reader = readID}};
#ifdef KIVO_DEVICE_HAS_READER
    const auto reading = std::make_shared<desk::Desk>(desk::Desk::Way::socket, folder.path());
    passport = reading->passport();
    choices.push_back({.name = "Document reader, simulated chip", .reader = reading->makeReader(/*usesCamera=*/true)});
    choices.push_back(
        {.name = "Document reader, real card readers", .reader = std::make_shared<reader::DocumentReader>()});
    desk_ = reading;
#endif
    documentReaders = std::make_shared<ChosenReader>(std::move(choices));
}

Laboratory::~Laboratory() {
    service->onRequest({});
}

void Laboratory::speak(const std::string& language) {
    host->returnToStart();
    platform::Services changed;
    changed.bundles = platform::linuxServices({.mainBundle = {},
                                               .dataFolder = dataFolder_,
                                               .trustedCertificates = service->trustedCertificates(),
                                               .language = language})
                          .bundles;
    platform::install(changed);
    window->setNeedsLayout();
}

void Laboratory::start() {
    host->start();
    host->setTheme(themePresets().front().make());
    host->setColors(hostColors());
}

} // namespace kivo::device::app
