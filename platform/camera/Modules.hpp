#pragma once

#include "platform/camera/CodeReader.hpp"

#include <kivo/platform/FrameSource.hpp>

#include <expected>
#include <memory>
#include <string>

namespace kivo::platform {

// GStreamer and the code reader bring some dozens of libraries along. They are linked to two modules that lie beside
// libkivo and are loaded when they are first needed, so that a host which never scans neither loads nor installs them.
// A module's file exports one of these records under the name `kivoModule`.

/// A module and the libkivo that loads it are made of one source: the version tells.
struct CodesModule {
    static constexpr auto file = "libkivo-codes.so";
    static constexpr auto needs = "zxing-cpp (Debian: libzxing2)";

    const char* version;
    std::shared_ptr<CodeReader> (*makeReader)();
};

struct CameraModule {
    static constexpr auto file = "libkivo-camera.so";
    static constexpr auto needs = "GStreamer (Debian: libgstreamer-plugins-base1.0-0, gstreamer1.0-plugins-good)";

    const char* version;
    std::shared_ptr<FrameSource> (*makePipeline)(const std::string& pipeline);
};

/// The module, which stays loaded; or what keeps it from being loaded, and what to do. Callable from any thread.
std::expected<const CodesModule*, std::string> codesModule();
std::expected<const CameraModule*, std::string> cameraModule();

} // namespace kivo::platform
