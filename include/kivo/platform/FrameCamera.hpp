#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/Camera.hpp>
#include <kivo/platform/FrameSource.hpp>

#include <memory>
#include <string>

namespace kivo::platform {

/// A camera that reads codes in the pictures of `source`, for a host with a source of its own. Install the camera as
/// `Services::camera`.
///
/// A thread of the session reads the newest picture; older pictures that still wait are dropped. Codes are delivered
/// after the delegate has taken the codes before, the code nearest to the middle of the picture first. Faults of the
/// camera are reported to `Services::diagnostics`.
KIVO_EXPORT std::shared_ptr<Camera> makeFrameCamera(std::shared_ptr<FrameSource> source);

/// The pictures of a GStreamer pipeline, such as `filesrc location=letter.png ! decodebin`. An empty pipeline stands
/// for the machine's first camera. GStreamer is loaded when the source is first opened.
KIVO_EXPORT std::shared_ptr<FrameSource> makePipelineSource(std::string pipeline = {});

} // namespace kivo::platform
