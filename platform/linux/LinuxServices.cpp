#include "FolderBundles.hpp"
#include "linux/CurlUrlSession.hpp"
#include "linux/DataFolder.hpp"
#include "linux/DesktopWorkspace.hpp"
#include "linux/FontconfigFonts.hpp"
#include "linux/LinuxDevice.hpp"
#include "linux/NetlinkReachability.hpp"
#include "linux/OpenSslTrust.hpp"
#include "linux/SqliteKeychain.hpp"

#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>

#include <cstdio>
#include <string>

namespace kivo::platform {
namespace {

class StandardErrorDiagnostics final : public Diagnostics {
public:
    void report(std::string_view component, std::string_view text) override {
        std::string line{"kivo: "};
        line.append(component).append(": ").append(text).append("\n");
        std::fwrite(line.data(), 1, line.size(), stderr);
    }
};

} // namespace

Services linuxServices(const LinuxOptions& options) {
    Services services;
    services.diagnostics = std::make_shared<StandardErrorDiagnostics>();
    services.bundles = makeFolderBundles(options.mainBundle, {}, services.diagnostics);
    const auto dataFolder =
        options.dataFolder.empty() ? defaultDataFolder(*services.bundles->main()) : options.dataFolder;
    services.mainQueue = RunLoop::main();
    services.urlSessions = makeCurlUrlSessions(options.trustedCertificates);
    services.trust = makeOpenSslTrust();
    services.keychain = makeSqliteKeychain(dataFolder, services.diagnostics);
    services.reachability = makeNetlinkReachability();
    services.device = makeLinuxDevice(dataFolder, services.diagnostics);
    services.workspace = makeDesktopWorkspace();
    services.fonts = makeFontconfigFonts();
    services.camera = makeFrameCamera(makePipelineSource(options.cameraPipeline));
    return services;
}

} // namespace kivo::platform
