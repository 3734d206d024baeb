#include "platform/base/DiagnosticsRelay.hpp"
#include "platform/bundle/FolderBundles.hpp"
#include "platform/curl/CurlUrlSession.hpp"
#include "platform/linux/LinuxDevice.hpp"
#include "platform/linux/LinuxParts.hpp"
#include "platform/openssl/OpenSslTrust.hpp"
#include "platform/sqlite/SqliteKeychain.hpp"

#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/LinuxServices.hpp>
#include <kivo/platform/RunLoop.hpp>

namespace kivo::platform {

Services linuxServices(const LinuxOptions& options) {
    Services services;
    services.diagnostics = standardErrorDiagnostics();
    const auto diagnostics = relayedDiagnostics();
    services.bundles = makeFolderBundles(options.mainBundle, {}, diagnostics, options.language);
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

Services defaultServices() {
    return linuxServices();
}

} // namespace kivo::platform
