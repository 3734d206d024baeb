#pragma once

#include <kivo/platform/Bundle.hpp>
#include <kivo/platform/Camera.hpp>
#include <kivo/platform/Device.hpp>
#include <kivo/platform/Diagnostics.hpp>
#include <kivo/platform/FaceTec.hpp>
#include <kivo/platform/Keychain.hpp>
#include <kivo/platform/MainQueue.hpp>
#include <kivo/platform/ReachabilityService.hpp>
#include <kivo/platform/ReadID.hpp>
#include <kivo/platform/Trust.hpp>
#include <kivo/platform/UrlSession.hpp>
#include <kivo/platform/Workspace.hpp>
#include <kivo/platform/ui/Fonts.hpp>

#include <filesystem>
#include <memory>
#include <string>

namespace kivo::platform {

/// Everything the SDK asks of the operating system and of the vendors, one pointer a service.
///
/// The services of Linux have threads and locks, which a forked child does not inherit. In a child that does not
/// execute a program, URL sessions made by the parent answer every request with a failure before the call returns, and
/// a keychain that the parent has used gives `errSecNotAvailable`. The child must not use the other services: fork
/// workers before the parent's first call to the library.
struct Services {
    std::shared_ptr<MainQueue> mainQueue;
    std::shared_ptr<UrlSessions> urlSessions;
    std::shared_ptr<Trust> trust;
    std::shared_ptr<Keychain> keychain;
    std::shared_ptr<ReachabilityService> reachability;
    std::shared_ptr<Bundles> bundles;
    std::shared_ptr<Device> device;
    std::shared_ptr<Workspace> workspace;
    /// Receives reports also from services that were made before the diagnostics were installed.
    std::shared_ptr<Diagnostics> diagnostics;
    std::shared_ptr<Fonts> fonts;
    std::shared_ptr<Camera> camera;
    /// The host's adapter to the face-scan vendor; null until one is installed.
    std::shared_ptr<FaceTec> faceTec;
    /// Null until a host brings the document-reading vendor's library.
    std::shared_ptr<ReadID> readID;
};

/// Puts services in place of the default ones; a null pointer keeps the one in force. Call it on the main thread,
/// before the first call to the SDK: what has been handed out by then stays in use.
KIVO_EXPORT void install(Services services);

/// The services in force; none of the pointers is null but a vendor's. Callable from any thread.
KIVO_EXPORT const Services& services();

/// Where the Linux services find things. Every default follows the desktop's conventions.
struct LinuxOptions {
    /// The host's bundle folder. Empty: the folder `<executable>.bundle` beside the executable.
    std::filesystem::path mainBundle;
    /// Where secrets and the device identifier are kept: a folder of this user, not a link, not writable by others.
    /// Empty: `kivo/<bundle identifier>` below `$XDG_DATA_HOME`.
    std::filesystem::path dataFolder;
    /// Certificates (PEM) to trust instead of the system's. Empty: `$SSL_CERT_FILE`, else the system's store.
    std::filesystem::path trustedCertificates;
    /// A GStreamer pipeline to take the camera's pictures from; see `makePipelineSource`. Empty: the first camera.
    std::string cameraPipeline{};
};

/// A fresh set of the Linux services, complete but for the vendors' libraries.
KIVO_EXPORT Services linuxServices(const LinuxOptions& options = {});

} // namespace kivo::platform
