#pragma once

#include <kivo/Export.hpp>

namespace kivo::platform {

/// A camera at work. Main thread.
class KIVO_EXPORT CaptureSession {
public:
    virtual ~CaptureSession() = default;

    virtual bool isRunning() const = 0;
    virtual void startRunning() = 0;
    virtual void stopRunning() = 0;
};

} // namespace kivo::platform
