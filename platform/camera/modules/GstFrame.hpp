#pragma once

#include <kivo/platform/VideoFrame.hpp>

#include <gst/gst.h>

#include <memory>

namespace kivo::platform {

/// The form in which pictures are asked for: brightness apart from colour, so that reading needs no conversion.
inline constexpr auto frameCaps = "video/x-raw,format=I420,colorimetry=(string)1:4:0:0";

/// Copies a picture of that form; null for anything else.
std::shared_ptr<const VideoFrame> copyFrame(GstSample* sample);

} // namespace kivo::platform
