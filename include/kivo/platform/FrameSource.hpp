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

    /// The newest picture. Returns at once and never calls back; of pictures that come faster than they can be looked
    /// at, some are passed over.
    virtual void take(std::shared_ptr<const VideoFrame> frame) = 0;

    /// No more pictures will come. `reason` says why and what to do, for the person who runs the host.
    virtual void end(std::string reason) = 0;
};

/// Where a camera's pictures come from. Called on the main thread.
class KIVO_EXPORT FrameSource {
public:
    virtual ~FrameSource() = default;

    /// Whether there is a camera to open.
    virtual bool isThere() { return true; }

    /// Opens the camera, or says what keeps it from being opened and what to do.
    virtual std::expected<void, std::string> open() { return {}; }

    /// Hands pictures to `sink` from now on, on any thread. A source that cannot start tells the sink so. Called again
    /// only after `stop()`, also when the source has ended by itself.
    virtual void start(std::shared_ptr<FrameSink> sink) = 0;

    /// Stops and closes. Also called on a source that was not started, or not even opened.
    virtual void stop() = 0;
};

} // namespace kivo::platform
