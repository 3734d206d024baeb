#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <expected>
#include <memory>
#include <string>

namespace kivo::platform {

/// Takes the pictures of a source. Callable from any thread, also after the source was told to stop.
class KIVO_EXPORT FrameSink {
public:
    virtual ~FrameSink() = default;

    /// Takes the newest picture. Returns at once and never calls back. When pictures come faster than they can be read,
    /// some are dropped.
    virtual void take(std::shared_ptr<const VideoFrame> frame) = 0;

    /// Tells that no more pictures will come. `reason` gives the fault and the remedy, for the person who runs the
    /// host.
    virtual void end(std::string reason) = 0;
};

/// The source of a camera's pictures. Called on the main thread, which stands still meanwhile: a source whose camera
/// may block waits on a thread of its own, and for a bounded time.
class KIVO_EXPORT FrameSource {
public:
    virtual ~FrameSource() = default;

    /// Whether there is a camera to open.
    virtual bool isThere() { return true; }

    /// Opens the camera. The error gives the fault and the remedy.
    virtual std::expected<void, std::string> open() { return {}; }

    /// Passes pictures to `sink` from now on, on any thread. A source that cannot start calls `sink->end()`. A second
    /// call comes only after `stop()`, even when the source has ended by itself.
    virtual void start(std::shared_ptr<FrameSink> sink) = 0;

    /// Stops and closes the source. May come without `start()`, and without `open()`.
    virtual void stop() = 0;
};

} // namespace kivo::platform
