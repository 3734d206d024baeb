#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/Camera.hpp>
#include <kivo/platform/FrameSource.hpp>

#include <memory>
#include <string>

namespace kivo::platform {

/// A camera that reads codes in the pictures of `source`: for a host that has pictures already, from a camera of its
/// own or from elsewhere. Install it as `Services::camera`.
///
/// Pictures are read on a thread of the session, the newest one first; one picture waits and no more. What was read is
/// handed over when the delegate has taken what came before, the code nearest to the middle of the picture first. What
/// keeps the camera from working is reported to `Services::diagnostics`.
KIVO_EXPORT std::shared_ptr<Camera> makeFrameCamera(std::shared_ptr<FrameSource> source);

/// The pictures of a GStreamer pipeline, such as `filesrc location=letter.png ! decodebin`. Empty: the machine's first
/// camera. GStreamer is loaded when the source is first opened.
KIVO_EXPORT std::shared_ptr<FrameSource> makePipelineSource(std::string pipeline = {});

} // namespace kivo::platform
