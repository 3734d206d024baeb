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
/// camera are reported to `Services::diagnostics`, and also that no picture has come five seconds after the start.
KIVO_EXPORT std::shared_ptr<Camera> makeFrameCamera(std::shared_ptr<FrameSource> source);

/// The pictures of a GStreamer pipeline, such as `filesrc location=letter.png ! decodebin`. An empty pipeline stands
/// for the machine's first camera. GStreamer is loaded when the source is first opened.
///
/// A pipeline works on threads of its own, so that a file or a device that blocks does not block the main thread:
/// starting returns at once, and opening and stopping return after two seconds at most. A pipeline that is not done by
/// then is left to stop by itself, which diagnostics tell, and the source opens again when that has happened. While
/// four such pipelines of sources that are gone still block, no pipeline opens. A JPEG file that ends within its
/// picture ends the source, with no picture.
///
/// A picture larger than `VideoFrame::largestSide` ends the source before memory is taken for the picture: raw and
/// compressed video and pictures whose form (caps) names the sides, and JPEG, PNG and GIF in front of any decoder. Not
/// bounded is a decoder that takes memory before it tells the sides of another format (`gdkpixbufdec` with TIFF, for
/// one): a host that names such a decoder in its pipeline answers for the files.
KIVO_EXPORT std::shared_ptr<FrameSource> makePipelineSource(std::string pipeline = {});

} // namespace kivo::platform
