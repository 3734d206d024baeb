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

/// The services of the operating system and of the vendors that the SDK uses, one pointer for each.
///
/// The services of Linux have threads and locks, which a forked child does not inherit. In a child that does not
/// execute a program, URL sessions made by the parent answer every request with a failure before the call returns, and
/// a keychain that the parent has used gives `errSecNotAvailable`. The child must not use the other services: fork
/// workers before the parent's first call to the library.
struct Services {
    /// The services that are always there. Each type says what the SDK expects.
    std::shared_ptr<MainQueue> mainQueue;
    std::shared_ptr<UrlSessions> urlSessions;
    std::shared_ptr<Trust> trust;
    std::shared_ptr<Keychain> keychain;
    std::shared_ptr<ReachabilityService> reachability;
    std::shared_ptr<Bundles> bundles;
    std::shared_ptr<Device> device;
    std::shared_ptr<Workspace> workspace;
    /// Receives reports even of services that were made before the diagnostics were installed.
    std::shared_ptr<Diagnostics> diagnostics;
    /// The installed fonts and the camera; never null.
    std::shared_ptr<Fonts> fonts;
    std::shared_ptr<Camera> camera;
    /// The host's adapter to the face-scan vendor; null until one is installed.
    std::shared_ptr<FaceTec> faceTec;
    /// The host's adapter to the document-reading vendor; null until one is installed.
    std::shared_ptr<ReadID> readID;
};

/// Replaces services. A null pointer keeps the present service. Call `install` on the main thread, before the first
/// call to the SDK: a service that is already in use stays in use.
KIVO_EXPORT void install(Services services);

/// The present services. Only the vendors' pointers may be null. Callable from any thread.
KIVO_EXPORT const Services& services();

/// A fresh set of the services of the library's platform, complete except for the vendors' libraries. These services
/// are used unless others are installed.
KIVO_EXPORT Services defaultServices();

} // namespace kivo::platform
