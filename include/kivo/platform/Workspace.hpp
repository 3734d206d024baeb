#pragma once

#include <kivo/Export.hpp>

#include <string>

namespace kivo::platform {

/// The desktop around the application. Callable from the main thread.
class KIVO_EXPORT Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens a web address in the person's browser. Returns at once; failure is silent.
    virtual void open(const std::string& url) = 0;

    /// Vibrates briefly where the device can.
    virtual void vibrate() = 0;
};

} // namespace kivo::platform
