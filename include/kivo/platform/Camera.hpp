#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/CaptureSession.hpp>

#include <memory>

namespace kivo::platform {

/// A camera that can be opened.
class KIVO_EXPORT CaptureDevice {
public:
    virtual ~CaptureDevice() = default;
};

/// The machine's cameras, and the objects that read codes with them. Main thread.
class KIVO_EXPORT Camera {
public:
    virtual ~Camera() = default;

    /// A session without input and output.
    virtual std::shared_ptr<CaptureSession> makeSession() = 0;

    /// The camera that a person would expect to be used; null when there is no camera.
    virtual std::shared_ptr<CaptureDevice> defaultVideoDevice() = 0;

    /// Opens a camera; null when it cannot be opened.
    virtual std::shared_ptr<CaptureInput> makeInput(const std::shared_ptr<CaptureDevice>& device) = 0;

    /// A new output; null when codes cannot be read on this machine.
    virtual std::shared_ptr<CaptureMetadataOutput> makeMetadataOutput() = 0;
};

} // namespace kivo::platform
