#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/FrameSource.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace kivo::platform {

// GStreamer and the code reader bring some dozens of libraries along. Two modules are linked to them, lie beside
// libkivo and are loaded at their first use, so that a host that never scans neither loads nor installs these
// libraries. The file of a module exports one of the records below under the name `entry`.

/// Finds machine-readable codes in a picture. For one thread at a time.
class CodeReader {
public:
    virtual ~CodeReader() = default;

    /// The readable codes of these types, the code nearest to the middle of the picture first. The frame must be whole.
    virtual std::vector<MetadataObject> read(const VideoFrame& frame, const std::vector<MetadataObjectType>& types) = 0;
};

/// A module works only with the libkivo of its own version. Its name carries the minor version, so that the modules of
/// two releases can lie in one folder.
struct CodesModule {
    static constexpr auto file = "libkivo-codes.so." KIVO_SOVERSION;
    static constexpr auto entry = "kivoCodes";
    static constexpr auto needs = "zxing-cpp (Debian: libzxing2)";

    const char* version;
    std::shared_ptr<CodeReader> (*makeReader)();
};

struct CameraModule {
    static constexpr auto file = "libkivo-camera.so." KIVO_SOVERSION;
    static constexpr auto entry = "kivoCamera";
    static constexpr auto needs = "GStreamer (Debian: libgstreamer-plugins-base1.0-0, gstreamer1.0-plugins-good)";

    const char* version;
    std::shared_ptr<FrameSource> (*makePipeline)(const std::string& pipeline);
};

/// The module, which stays loaded. The error says why the module cannot be loaded, and the remedy. Any thread.
std::expected<const CodesModule*, std::string> codesModule();
std::expected<const CameraModule*, std::string> cameraModule();

} // namespace kivo::platform
