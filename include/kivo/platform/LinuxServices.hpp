#pragma once

#include <kivo/platform/Services.hpp>

#include <filesystem>
#include <string>

namespace kivo::platform {

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
