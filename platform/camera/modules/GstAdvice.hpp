#pragma once

#include <gst/gst.h>

#include <string>
#include <string_view>

namespace kivo::platform {

/// A line for the person who runs the host: GStreamer's own text and the remedy.
std::string describe(const GError& error);

/// The line for an error on the bus.
std::string describe(GstMessage& error);

/// The line for any other problem.
std::string noPictures(std::string_view problem, std::string_view remedy);

} // namespace kivo::platform
