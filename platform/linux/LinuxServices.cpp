#include "DiagnosticsRelay.hpp"
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

namespace kivo::platform {

Services linuxServices(const LinuxOptions& options) {
    Services services;
    services.diagnostics = standardErrorDiagnostics();
    const auto diagnostics = relayedDiagnostics();
    services.bundles = makeFolderBundles(options.mainBundle, {}, diagnostics);
    const auto dataFolder =
        options.dataFolder.empty() ? defaultDataFolder(*services.bundles->main()) : DataFolder{options.dataFolder};
    services.mainQueue = RunLoop::main();
    services.urlSessions = makeCurlUrlSessions(options.trustedCertificates);
    services.trust = makeOpenSslTrust();
    services.keychain = makeSqliteKeychain(dataFolder, diagnostics);
    services.reachability = makeNetlinkReachability();
    services.device = makeLinuxDevice(dataFolder, diagnostics);
    services.workspace = makeDesktopWorkspace();
    services.fonts = makeFontconfigFonts();
    services.camera = makeFrameCamera(makePipelineSource(options.cameraPipeline));
    return services;
}

} // namespace kivo::platform
