#pragma once

#include <gst/gst.h>

#include <string>
#include <string_view>

namespace kivo::platform {

/// A line for the person who runs the host: what GStreamer says, and what to do about it. `debug` is what comes along
/// with an error on the bus.
std::string describe(const GError& error, std::string_view debug = {});

} // namespace kivo::platform
