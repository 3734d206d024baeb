#pragma once

#include <gst/gst.h>

#include <functional>
#include <memory>
#include <string>

namespace kivo::platform {

/// Keeps pictures beyond `VideoFrame::largestSide` out of a pipeline, before an element takes memory for one, and JPEG
/// files that end within their first picture, of which decoders would make half a picture.
///
/// `refused` is called with the reason, on a thread of the pipeline and perhaps more than once. From then on no picture
/// moves in the pipeline.
void guardPictures(GstBin& pipeline, std::function<void(std::string)> refused);

} // namespace kivo::platform
