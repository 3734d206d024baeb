#pragma once

#include <kivo/platform/FrameSource.hpp>

#include <memory>
#include <string>

namespace kivo::platform {

/// The pictures of a GStreamer pipeline, as its text describes it up to where the pictures come out.
std::shared_ptr<FrameSource> makeGstPipeline(const std::string& description);

} // namespace kivo::platform
