#pragma once

#include <gst/gst.h>

#include <string>

namespace kivo::platform {

/// A sentence for the person who runs the host: what GStreamer says, and what to do about it.
std::string describe(const GError& error);

} // namespace kivo::platform
