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

#include <memory>

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

/// A fresh set of the services of the platform that the library was built for, complete but for the vendors' libraries.
/// Without another `install`, these are in force.
KIVO_EXPORT Services defaultServices();

} // namespace kivo::platform
