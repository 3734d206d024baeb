#include "GstFrame.hpp"

#include <gst/video/video.h>

#include <cstdint>

namespace kivo::platform {
namespace {

void appendPlane(std::vector<std::uint8_t>& bytes, const GstVideoFrame& frame, guint plane) {
    const auto* row = static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
    const auto width = GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane);
    const auto height = GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane);
    for (int y = 0; y < height; ++y, row += GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane)) {
        bytes.insert(bytes.end(), row, row + width);
    }
}

} // namespace

std::shared_ptr<const VideoFrame> copyFrame(GstSample* sample) {
    GstVideoInfo info;
    GstVideoFrame mapped;
    auto* const caps = gst_sample_get_caps(sample);
    auto* const buffer = gst_sample_get_buffer(sample);
    if (caps == nullptr || buffer == nullptr || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_I420 ||
        !gst_video_frame_map(&mapped, &info, buffer, GST_MAP_READ)) {
        return nullptr;
    }
    auto frame = std::make_shared<VideoFrame>();
    frame->width = GST_VIDEO_FRAME_WIDTH(&mapped);
    frame->height = GST_VIDEO_FRAME_HEIGHT(&mapped);
    frame->format = VideoFrame::Format::i420;
    frame->bytes.reserve(GST_VIDEO_INFO_SIZE(&info));
    for (guint plane = 0; plane < 3; ++plane) {
        appendPlane(frame->bytes, mapped, plane);
    }
    gst_video_frame_unmap(&mapped);
    return frame;
}

} // namespace kivo::platform
