#pragma once

#include <kivo/platform/Services.hpp>

#include <filesystem>
#include <string>

namespace kivo::platform {

/// The places that the Linux services use. Every default follows the desktop's conventions.
struct LinuxOptions {
    /// The host's bundle folder. Empty: the folder `<executable>.bundle` beside the executable.
    std::filesystem::path mainBundle;
    /// The folder of secrets and of the device identifier. It must belong to this user, must not be a symbolic link,
    /// and other users must not be able to write it. Empty: `kivo/<bundle identifier>` below `$XDG_DATA_HOME`.
    std::filesystem::path dataFolder;
    /// A file of certificates (PEM) that replaces the system's store. Empty: `$SSL_CERT_FILE` if set, else the system's
    /// store.
    std::filesystem::path trustedCertificates;
    /// The GStreamer pipeline that gives the camera's pictures; see `makePipelineSource`. Empty: the first camera.
    std::string cameraPipeline{};
    /// The person's language, such as "de" or "pt_BR". Empty: that of `LC_ALL`, `LC_MESSAGES` or `LANG`.
    std::string language{};
};

/// A fresh set of the Linux services, complete except for the vendors' libraries.
KIVO_EXPORT Services linuxServices(const LinuxOptions& options = {});

} // namespace kivo::platform
