#include "GstProblem.hpp"

#include <algorithm>

namespace kivo::platform {
namespace {

std::string_view adviceFor(const GError& error) {
    const auto is = [&](GQuark domain, int code) { return error.domain == domain && error.code == code; };
    if (is(GST_PARSE_ERROR, GST_PARSE_ERROR_NO_SUCH_ELEMENT) || is(GST_CORE_ERROR, GST_CORE_ERROR_MISSING_PLUGIN) ||
        is(GST_STREAM_ERROR, GST_STREAM_ERROR_CODEC_NOT_FOUND)) {
        return "install the GStreamer plugins with it (Debian: gstreamer1.0-plugins-base, gstreamer1.0-plugins-good)";
    }
    if (is(GST_STREAM_ERROR, GST_STREAM_ERROR_WRONG_TYPE) || is(GST_STREAM_ERROR, GST_STREAM_ERROR_TYPE_NOT_FOUND)) {
        return "name a file with pictures or video in it";
    }
    if (error.domain == GST_PARSE_ERROR) {
        return "correct LinuxOptions::cameraPipeline; gst-launch-1.0 takes the same text";
    }
    if (is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_BUSY)) {
        return "close the program that uses the camera";
    }
    if (is(GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_NOT_FOUND)) {
        return "connect the camera, or correct LinuxOptions::cameraPipeline";
    }
    if (error.domain == GST_RESOURCE_ERROR) {
        return "see that the camera is connected, that nobody else uses it, and that this person may (group \"video\")";
    }
    return "GST_DEBUG=3 in the environment shows more";
}

} // namespace

std::string describe(const GError& error, std::string_view debug) {
    std::string text{"the camera gives no pictures: "};
    text.append(error.message);
    // The first line tells the place in GStreamer's source, the others what has really happened.
    if (const auto end = debug.find('\n'); end != std::string_view::npos) {
        text.append(" (").append(debug.substr(end + 1)).append(")");
    }
    std::ranges::replace(text, '\n', ' ');
    return text.append(" To do: ").append(adviceFor(error)).append(".");
}

} // namespace kivo::platform
